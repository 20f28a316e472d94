#pragma once
// A small XML document object model over pugixml, with the calls and the
// defaults the dictionary code was written against: whitespace-only text is
// dropped on parsing, a failed load leaves an empty document, `text` is the
// text of a whole subtree, and a node is made by its document and then
// appended. Null pointers stand for "Nothing".
//
// Nodes made by createElement, createTextNode or createAttribute stand alone
// until they are appended; appending places a copy and gives it back, so keep
// working on what appendChild or setNamedItem returns. A node stays valid as
// long as its document holds the tree it was taken from: loading the document
// again invalidates the old nodes.

#include <memory>
#include <string>
#include <vector>

#include <pugixml.hpp>

namespace halvane::xml {

class DOMDocument;
class DOMNode;
using IXMLDOMDocumentPtr = std::shared_ptr<DOMDocument>;
using IXMLDOMNodePtr = std::shared_ptr<DOMNode>;

class DOMDocument : public std::enable_shared_from_this<DOMDocument> {
public:
    static IXMLDOMDocumentPtr Create();

    // Replace the content; false, with an empty document, when the text or
    // file does not parse (an empty text does not).
    bool loadXML(const std::string& text);
    bool load(const std::string& path);
    // Writes the document as UTF-8 without a declaration; fails when the file
    // can't be written.
    void save(const std::string& path) const;

    IXMLDOMNodePtr documentElement();
    IXMLDOMNodePtr createElement(const std::string& name);
    IXMLDOMNodePtr createTextNode(const std::string& data);
    IXMLDOMNodePtr createAttribute(const std::string& name);

private:
    friend class DOMNode;
    DOMDocument() = default;

    pugi::xml_document doc_;
};

class DOMNode {
public:
    // Appends a copy of `child` (a node of this document not yet placed) and
    // returns the placed node.
    IXMLDOMNodePtr appendChild(const IXMLDOMNodePtr& child);
    IXMLDOMDocumentPtr ownerDocument() const { return owner_; }

    // XPath relative to this node; null or empty when nothing matches.
    IXMLDOMNodePtr selectSingleNode(const std::string& xpath) const;
    std::vector<IXMLDOMNodePtr> selectNodes(const std::string& xpath) const;

    // The text of the node and everything below it, in document order.
    std::string text() const;
    void text(const std::string& value);
    // The node as markup, exactly as it stands, whitespace nodes included.
    std::string xml() const;

    // `attributes.setNamedItem`: places a copy of an attribute made by
    // createAttribute, replacing one of the same name, and returns it.
    IXMLDOMNodePtr setNamedItem(const IXMLDOMNodePtr& attribute);
    // The value of an attribute or text node; an element has none.
    std::string nodeValue() const;
    void nodeValue(const std::string& value);
    // `IXMLDOMAttribute.value`.
    void value(const std::string& value) { nodeValue(value); }

private:
    friend class DOMDocument;
    DOMNode(IXMLDOMDocumentPtr owner, pugi::xml_node node, pugi::xml_attribute attribute = {},
            std::shared_ptr<pugi::xml_document> detached = nullptr);
    static IXMLDOMNodePtr Make(IXMLDOMDocumentPtr owner, pugi::xpath_node hit);

    IXMLDOMDocumentPtr owner_;
    // Holds a node that was made but not yet placed.
    std::shared_ptr<pugi::xml_document> detached_;
    pugi::xml_node node_;
    pugi::xml_attribute attribute_;  // set when this node is an attribute
};

}  // namespace halvane::xml
