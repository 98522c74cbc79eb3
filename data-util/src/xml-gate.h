// The gate through which foreign XML passes before anything else looks at it.
//
// Face documents come from peers. Expat decides what is well-formed; a document type, an encoding other
// than UTF-8 and anything beyond the limits below is refused at once, so the tree is only ever built from a
// harmless text.

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "finding.h"

namespace DataUtil {

constexpr std::size_t kMostBytes = 1024 * 1024;
constexpr std::size_t kMostDepth = 16;
constexpr int kMostElements = 8192;
constexpr int kMostAttributes = 32;  // of one element

// Turns offsets in a text into lines and columns. Constant time for each, so that a document of a single
// very long line costs no more than another. The text must outlive the map.
class TextMap {
public:
    explicit TextMap(std::string_view text);
    Place PlaceAt(std::size_t offset) const;

private:
    static constexpr std::size_t kStep = 64;
    std::size_t CharactersBefore(std::size_t offset) const;

    std::string_view mText;
    std::vector<std::size_t> mLineStarts;
    std::vector<std::size_t> mCharactersBefore;  // one entry every kStep bytes
};

// A well-formed document as a tree that knows where its nodes stand in the text. Places are found when they
// are asked for; a tree belongs to one thread at a time.
class XmlTree {
public:
    // The tree of `text`, or null with one finding that says why not.
    static std::unique_ptr<XmlTree> Load(std::string_view text, Findings& findings);

    pugi::xml_node Root() const { return mDocument.document_element(); }
    // The place of an element, or of one of its attributes. `path` is taken over unchanged.
    Place PlaceOf(const pugi::xml_node& node, std::string path) const;
    Place PlaceOf(const pugi::xml_node& node, std::string_view attribute, std::string path) const;

private:
    explicit XmlTree(std::string_view text);
    XmlTree(const XmlTree&) = delete;
    XmlTree& operator=(const XmlTree&) = delete;
    Place PlaceAt(std::size_t offset, std::string path) const;

    std::string mText;
    mutable std::optional<TextMap> mMap;
    pugi::xml_document mDocument;
};

// The way from the root to an element, as "/face-result/options[1]/style[dial]".
std::string PathOf(const pugi::xml_node& node);

// Where an element stands. The tree must outlive it.
class Origin {
public:
    Origin() = default;
    Origin(const XmlTree& tree, pugi::xml_node node) : mTree(&tree), mNode(node) {}

    Place Where() const;
    // The place of the attribute, or of the element without it.
    Place Where(std::string_view attribute) const;

private:
    const XmlTree* mTree = nullptr;
    pugi::xml_node mNode;
};

}  // namespace DataUtil
