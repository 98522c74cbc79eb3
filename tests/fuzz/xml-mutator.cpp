// Mutations that keep a text well-formed XML, so that what lies behind the gate is reached: attributes and
// elements are removed, doubled, moved and given each other's values. Every fourth time the bytes are
// mutated.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <pugixml.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

class Mutator {
public:
    Mutator(pugi::xml_document& document, unsigned seed) : mRandom(seed)
    {
        Collect(document.document_element());
    }

    bool Mutate()
    {
        if (mNodes.size() < 2) return false;
        for (std::size_t times = 1 + mRandom() % 3; times > 0; --times) Once();
        return true;
    }

private:
    void Collect(pugi::xml_node node)
    {
        mNodes.push_back(node);
        for (const pugi::xml_node child : node.children()) {
            if (child.type() == pugi::node_element) Collect(child);
        }
    }

    pugi::xml_node Any() { return mNodes[mRandom() % mNodes.size()]; }
    // No root, so that there always is one.
    pugi::xml_node Inner() { return mNodes[1 + mRandom() % (mNodes.size() - 1)]; }

    pugi::xml_attribute AnyAttribute()
    {
        for (int tries = 0; tries < 8; ++tries) {
            const pugi::xml_node node = Any();
            std::vector<pugi::xml_attribute> attributes;
            for (const pugi::xml_attribute attribute : node.attributes()) attributes.push_back(attribute);
            if (!attributes.empty()) return attributes[mRandom() % attributes.size()];
        }
        return {};
    }

    std::string Edited(std::string value)
    {
        value.resize(64);
        const std::size_t size = std::strlen(value.c_str());
        value.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(value.data()), size, 48));
        for (char& c : value) {
            if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F) c = 'x';
        }
        return value;
    }

    void Once()
    {
        switch (mRandom() % 8) {
            case 0: {  // an attribute takes the value of another
                pugi::xml_attribute attribute = AnyAttribute();
                attribute.set_value(std::string(AnyAttribute().value()).c_str());
                break;
            }
            case 1: {  // a value is edited
                pugi::xml_attribute attribute = AnyAttribute();
                if (attribute) attribute.set_value(Edited(attribute.value()).c_str());
                break;
            }
            case 2: {  // an attribute goes
                pugi::xml_node node = Any();
                node.remove_attribute(node.last_attribute());
                break;
            }
            case 3: {  // an attribute appears elsewhere
                const pugi::xml_attribute attribute = AnyAttribute();
                pugi::xml_node node = Any();
                if (attribute && !node.attribute(attribute.name())) node.append_copy(attribute);
                break;
            }
            case 4: {  // an element is doubled
                const pugi::xml_node node = Inner();
                node.parent().insert_copy_after(node, node);
                break;
            }
            case 5: {  // an element appears elsewhere
                const pugi::xml_node node = Inner();
                Any().append_copy(node);
                break;
            }
            case 6: {  // an element changes its place among its siblings
                pugi::xml_node node = Inner();
                node.parent().prepend_move(node);
                break;
            }
            default: {  // an element loses what it holds, or its text
                pugi::xml_node node = Inner();
                node.remove_child(node.last_child());
                // What was removed must not be met again.
                mNodes.clear();
                Collect(node.root().first_child());
                if (mNodes.size() < 2) mNodes.push_back(mNodes.front());
                break;
            }
        }
    }

    std::mt19937 mRandom;
    std::vector<pugi::xml_node> mNodes;
};

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned seed)
{
    pugi::xml_document document;
    if (seed % 4 == 0 || !document.load_buffer(data, size)) return LLVMFuzzerMutate(data, size, most);
    if (!Mutator(document, seed).Mutate()) return LLVMFuzzerMutate(data, size, most);
    std::ostringstream out;
    document.save(out, " ");
    const std::string text = out.str();
    if (text.size() > most) return LLVMFuzzerMutate(data, size, most);
    std::memcpy(data, text.data(), text.size());
    return text.size();
}
