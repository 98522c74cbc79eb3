// A small view of an XML document, for reading. Nodes are valid while their parser lives.

#pragma once

#include <memory>
#include <string>
#include <vector>

class CommonUtilXmlNode;

// The element children of a node, in document order.
class CommonUtilXmlNodeRange {
public:
    // All element children of `node`, or those of one name.
    static CommonUtilXmlNodeRange GetChildren(const CommonUtilXmlNode& node);
    static CommonUtilXmlNodeRange GetChildren(const CommonUtilXmlNode& node, const std::string& name);

    std::vector<CommonUtilXmlNode>::const_iterator begin() const;
    std::vector<CommonUtilXmlNode>::const_iterator end() const;

private:
    std::vector<CommonUtilXmlNode> mNodes;
};

class CommonUtilXmlNode {
public:
    bool IsValid() const;
    std::string GetName() const;
    std::string GetAttribute(const std::string& name) const;  // empty when missing

private:
    friend class CommonUtilXmlParser;
    friend class CommonUtilXmlNodeRange;
    const void* mNode = nullptr;
};

class CommonUtilXmlParser {
public:
    explicit CommonUtilXmlParser(const std::string& path);
    ~CommonUtilXmlParser();
    CommonUtilXmlParser(const CommonUtilXmlParser&) = delete;
    CommonUtilXmlParser& operator=(const CommonUtilXmlParser&) = delete;

    CommonUtilXmlNode GetRoot() const;  // invalid when the file is missing or not well-formed

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};
