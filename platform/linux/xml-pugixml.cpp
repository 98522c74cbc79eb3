// The XML module: the gate of the face documents decides what is well-formed, pugixml holds the tree.

#include <fstream>
#include <iterator>
#include <new>
#include <pugixml.hpp>
#include <string>

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

}  // namespace

void* watch_xml_open(const char* path)
{
    try {
        std::ifstream file(path, std::ios::binary);
        if (!file) return nullptr;
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        DataUtil::Findings findings;
        return DataUtil::XmlTree::Load(text, findings).release();
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
