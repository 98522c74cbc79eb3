// The XML module: the gate of the face documents decides what is well-formed, pugixml holds the tree.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <optional>
#include <pugixml.hpp>
#include <string>

#include "unique-fd.h"
#include "xml-gate.h"
#include "xml-module.h"

namespace {

pugi::xml_node NodeOf(const void* handle)
{
    // The handle is pugixml's own; it hands out and takes a mutable one.
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(const_cast<void*>(handle)));
}

bool Fits(const pugi::xml_node& node, const char* name)
{
    return node.type() == pugi::node_element && (!name || std::string_view(node.name()) == name);
}

// The first of `node` and those after it that is an element of that name.
const void* FirstFitting(pugi::xml_node node, const char* name)
{
    while (node && !Fits(node, name)) node = node.next_sibling();
    return node.internal_object();
}

// A regular file no longer than the gate takes; anything else, which may be endless or never answer, counts
// as missing.
std::optional<std::string> ReadDocument(const char* path)
{
    const Platform::UniqueFd file(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat info {};
    if (!file || fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
    std::string text(DataUtil::kMostBytes + 1, '\0');
    std::size_t length = 0;
    while (length < text.size()) {
        const ssize_t n = read(file.Get(), text.data() + length, text.size() - length);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return std::nullopt;
        if (n == 0) break;
        length += static_cast<std::size_t>(n);
    }
    text.resize(length);
    return text;
}

}  // namespace

void* watch_xml_open(const char* path)
{
    try {
        const auto text = ReadDocument(path);
        if (!text) return nullptr;
        DataUtil::Findings findings;
        return DataUtil::XmlTree::Load(*text, findings).release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void watch_xml_close(void* document)
{
    delete static_cast<DataUtil::XmlTree*>(document);
}

const void* watch_xml_root(void* document)
{
    return static_cast<DataUtil::XmlTree*>(document)->Root().internal_object();
}

const void* watch_xml_first_child(const void* node, const char* name)
{
    return FirstFitting(NodeOf(node).first_child(), name);
}

const void* watch_xml_next_sibling(const void* node, const char* name)
{
    return FirstFitting(NodeOf(node).next_sibling(), name);
}

const char* watch_xml_name(const void* node)
{
    return NodeOf(node).name();
}

const char* watch_xml_attribute(const void* node, const char* name)
{
    return NodeOf(node).attribute(name).value();
}
