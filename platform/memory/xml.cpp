#include <expat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <pugixml.hpp>

#include "common-util-xml.h"
#include "platform-state.h"

namespace {

pugi::xml_node Node(const void* node)
{
    // pugixml's nodes are handles onto one pointer.
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(const_cast<void*>(node)));
}

// pugixml alone takes duplicate attributes, unknown entities, two roots and bad UTF-8.
bool IsWellFormed(const std::string& text)
{
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    return XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE) == XML_STATUS_OK;
}

}  // namespace

std::vector<CommonUtilXmlNode>::const_iterator CommonUtilXmlNodeRange::begin() const
{
    return mNodes.begin();
}
std::vector<CommonUtilXmlNode>::const_iterator CommonUtilXmlNodeRange::end() const
{
    return mNodes.end();
}

CommonUtilXmlNodeRange CommonUtilXmlNodeRange::GetChildren(const CommonUtilXmlNode& node)
{
    CommonUtilXmlNodeRange range;
    for (const pugi::xml_node child : Node(node.mNode).children()) {
        if (child.type() != pugi::node_element) continue;
        range.mNodes.emplace_back().mNode = child.internal_object();
    }
    return range;
}

CommonUtilXmlNodeRange CommonUtilXmlNodeRange::GetChildren(const CommonUtilXmlNode& node,
                                                           const std::string& name)
{
    CommonUtilXmlNodeRange range = GetChildren(node);
    std::erase_if(range.mNodes, [&](const CommonUtilXmlNode& child) { return child.GetName() != name; });
    return range;
}

bool CommonUtilXmlNode::IsValid() const
{
    return mNode != nullptr;
}
std::string CommonUtilXmlNode::GetName() const
{
    return Node(mNode).name();
}

std::string CommonUtilXmlNode::GetAttribute(const std::string& name) const
{
    return Node(mNode).attribute(name.c_str()).value();
}

class CommonUtilXmlParser::Impl {
public:
    pugi::xml_document document;
    bool wellFormed = false;
};

CommonUtilXmlParser::CommonUtilXmlParser(const std::string& path) : mImpl(std::make_unique<Impl>())
{
    MemoryPlatform::Note("xml " + MemoryPlatform::Shown(path));
    constexpr std::uintmax_t kMostBytes = 1024 * 1024;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return;
    if (std::filesystem::file_size(path, error) > kMostBytes) return;
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    mImpl->wellFormed = IsWellFormed(text) && mImpl->document.load_buffer(text.data(), text.size());
}

CommonUtilXmlParser::~CommonUtilXmlParser() = default;

CommonUtilXmlNode CommonUtilXmlParser::GetRoot() const
{
    CommonUtilXmlNode root;
    if (mImpl->wellFormed) root.mNode = mImpl->document.document_element().internal_object();
    return root;
}
