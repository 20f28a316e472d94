#pragma once
// One class rule of a dictionary and the ordered list of them. Bounds are
// text from the file to the map algebra string: nothing parses them, and an
// empty text is the only way to leave a bound out.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/xml/Dom.h"

namespace halvane::classification {

class clsClassificationRec {
public:
    std::int16_t ID = 0;  // the editor's grid row, not the class number
    std::int16_t Class = 0;
    std::string Zone;
    std::string SSB_LowerBounds;
    std::string SSB_UpperBounds;
    std::string LSB_LowerBounds;
    std::string LSB_UpperBounds;
    std::string Slope_LowerBounds;
    std::string Slope_UpperBounds;
    std::string Depth_LowerBounds;
    std::string Depth_UpperBounds;

    // The text fields after Class, by element name, in the file's order.
    using TextField = std::pair<const char*, std::string clsClassificationRec::*>;
    static const std::array<TextField, 9> kTextFields;

    std::string NodeName() const;
    std::string XML() const;
    void XML(const std::string& text);
    xml::IXMLDOMNodePtr CreateNode(const xml::IXMLDOMNodePtr& ParentNode) const;
    // Fills the fields from a ClassRec element. A missing element or an ID or
    // Class that isn't a 16-bit number is reported; after a bad number the
    // fields still unread keep their defaults.
    void LoadNode(const xml::IXMLDOMNodePtr& Node);
    // The text at XPath below Node; reported, and empty, when nothing is there.
    std::string GetNodeText(const xml::IXMLDOMNodePtr& Node, const std::string& XPath) const;
};

using ClassificationRecPtr = std::shared_ptr<clsClassificationRec>;

// Records in insertion order, addressed from 1. No handlers: failures go to
// the caller.
class clsClassificationRecs {
public:
    std::string NodeName() const;
    std::string XML() const;
    void XML(const std::string& text);
    xml::IXMLDOMNodePtr CreateNode(const xml::IXMLDOMNodePtr& ParentNode) const;
    // Replaces the list by the ClassRec elements below Node, in document
    // order; a null Node keeps the list.
    void LoadNode(const xml::IXMLDOMNodePtr& Node);
    std::string GetNodeText(const xml::IXMLDOMNodePtr& Node, const std::string& XPath) const;

    void Add(ClassificationRecPtr record);
    ClassificationRecPtr Item(std::int16_t index) const;
    void Item(std::int16_t index, ClassificationRecPtr record);
    std::int32_t Count() const { return static_cast<std::int32_t>(records_.size()); }
    void Remove(std::int16_t index);
    const std::vector<ClassificationRecPtr>& NewEnum() const { return records_; }

private:
    std::size_t Position(std::int16_t index) const;

    std::vector<ClassificationRecPtr> records_;
};

using ClassificationRecsPtr = std::shared_ptr<clsClassificationRecs>;

// What every writer of the dictionary puts after an opening tag and after each
// leaf: a line break and one tab.
inline constexpr const char* kIndent = "\r\n\t";

// createElement, its text, appendChild, then the indent after it.
void AppendChildElement(const xml::IXMLDOMDocumentPtr& oDoc, const xml::IXMLDOMNodePtr& oNode,
                        const std::string& sName, const std::string& sValue);

// A new element under ParentNode, or, without a parent, the root of a new
// document made from "<sName/>".
xml::IXMLDOMNodePtr NewElement(const xml::IXMLDOMNodePtr& ParentNode, const std::string& sName);

// Appends the indent as a text node.
void AppendIndent(const xml::IXMLDOMNodePtr& oNode);

// loadXML into a new document; its root, null when the text doesn't parse.
xml::IXMLDOMNodePtr ParsedRoot(const std::string& text);

// selectSingleNode and the text of what it finds; fails (91) when nothing is
// found.
std::string SelectedText(const xml::IXMLDOMNodePtr& Node, const std::string& XPath);

}  // namespace halvane::classification
