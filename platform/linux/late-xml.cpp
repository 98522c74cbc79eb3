// Reading XML through the module, opened when the first document is read.

#include "common-util-xml.h"
#include "late-library.h"
#include "module-path.h"
#include "xml-module.h"

namespace {

struct XmlModule {
    Platform::LateLibrary library{Platform::ModulePath("platform-xml.so")};
    Platform::LateFunction<decltype(watch_xml_open)> open{library, "watch_xml_open"};
    Platform::LateFunction<decltype(watch_xml_close)> close{library, "watch_xml_close"};
    Platform::LateFunction<decltype(watch_xml_root)> root{library, "watch_xml_root"};
    Platform::LateFunction<decltype(watch_xml_first_child)> firstChild{library, "watch_xml_first_child"};
    Platform::LateFunction<decltype(watch_xml_next_sibling)> nextSibling{library, "watch_xml_next_sibling"};
    Platform::LateFunction<decltype(watch_xml_name)> name{library, "watch_xml_name"};
    Platform::LateFunction<decltype(watch_xml_attribute)> attribute{library, "watch_xml_attribute"};
    bool isComplete = open && close && root && firstChild && nextSibling && name && attribute;
};

const XmlModule& Module()
{
    static const XmlModule module;
    return module;
}

}  // namespace

class CommonUtilXmlParser::Impl {
public:
    explicit Impl(const std::string& path)
        : mDocument(Module().isComplete ? Module().open(path.c_str()) : nullptr)
    {
    }
    ~Impl()
    {
        if (mDocument) Module().close(mDocument);
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    const void* Root() const { return mDocument ? Module().root(mDocument) : nullptr; }

private:
    void* const mDocument;
};

CommonUtilXmlParser::CommonUtilXmlParser(const std::string& path) : mImpl(std::make_unique<Impl>(path)) {}
CommonUtilXmlParser::~CommonUtilXmlParser() = default;

CommonUtilXmlNode CommonUtilXmlParser::GetRoot() const
{
    CommonUtilXmlNode node;
    node.mNode = mImpl->Root();
    return node;
}

bool CommonUtilXmlNode::IsValid() const
{
    return mNode != nullptr;
}
std::string CommonUtilXmlNode::GetName() const
{
    return mNode ? Module().name(mNode) : "";
}

std::string CommonUtilXmlNode::GetAttribute(const std::string& name) const
{
    return mNode ? Module().attribute(mNode, name.c_str()) : "";
}

namespace {

std::vector<const void*> ChildrenOf(const void* node, const char* name)
{
    std::vector<const void*> children;
    for (const void* child = node ? Module().firstChild(node, name) : nullptr; child;
         child = Module().nextSibling(child, name)) {
        children.push_back(child);
    }
    return children;
}

}  // namespace

CommonUtilXmlNodeRange CommonUtilXmlNodeRange::GetChildren(const CommonUtilXmlNode& node)
{
    CommonUtilXmlNodeRange range;
    for (const void* child : ChildrenOf(node.mNode, nullptr)) range.mNodes.emplace_back().mNode = child;
    return range;
}

CommonUtilXmlNodeRange CommonUtilXmlNodeRange::GetChildren(const CommonUtilXmlNode& node,
                                                           const std::string& name)
{
    CommonUtilXmlNodeRange range;
    for (const void* child : ChildrenOf(node.mNode, name.c_str())) range.mNodes.emplace_back().mNode = child;
    return range;
}

std::vector<CommonUtilXmlNode>::const_iterator CommonUtilXmlNodeRange::begin() const
{
    return mNodes.begin();
}
std::vector<CommonUtilXmlNode>::const_iterator CommonUtilXmlNodeRange::end() const
{
    return mNodes.end();
}
