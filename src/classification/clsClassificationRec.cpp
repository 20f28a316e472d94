#include "classification/clsClassificationRec.h"

#include "platform/reporting/ErrorHandling.h"
#include "platform/runtime/Convert.h"

namespace halvane::classification {
namespace {

using runtime::Deref;

constexpr const char* kModule = "clsClassificationRec";

Procedure Reported(const char* name) { return {name, kModule, kTopLevel}; }

void NodeAppendAttribute(const xml::IXMLDOMDocumentPtr& oDoc, const xml::IXMLDOMNodePtr& oNode,
                         const std::string& sName, const std::string& sValue) {
    Guarded(Reported("NodeAppendAttribute"), [&] {
        xml::IXMLDOMNodePtr oAttribute = Deref(oDoc).createAttribute(sName);
        oAttribute->value(sValue);
        Deref(Deref(oNode).setNamedItem(oAttribute)).nodeValue(sValue);
    });
}

void NodeAppendChildElement(const xml::IXMLDOMDocumentPtr& oDoc, const xml::IXMLDOMNodePtr& oNode,
                            const std::string& sName, const std::string& sValue) {
    Guarded(Reported("NodeAppendChildElement"),
            [&] { AppendChildElement(oDoc, oNode, sName, sValue); });
}

}  // namespace

const std::array<clsClassificationRec::TextField, 9> clsClassificationRec::kTextFields = {{
    {"Zone", &clsClassificationRec::Zone},
    {"SSB_LowerBounds", &clsClassificationRec::SSB_LowerBounds},
    {"SSB_UpperBounds", &clsClassificationRec::SSB_UpperBounds},
    {"LSB_LowerBounds", &clsClassificationRec::LSB_LowerBounds},
    {"LSB_UpperBounds", &clsClassificationRec::LSB_UpperBounds},
    {"Slope_LowerBounds", &clsClassificationRec::Slope_LowerBounds},
    {"Slope_UpperBounds", &clsClassificationRec::Slope_UpperBounds},
    {"Depth_LowerBounds", &clsClassificationRec::Depth_LowerBounds},
    {"Depth_UpperBounds", &clsClassificationRec::Depth_UpperBounds},
}};

void AppendChildElement(const xml::IXMLDOMDocumentPtr& oDoc, const xml::IXMLDOMNodePtr& oNode,
                        const std::string& sName, const std::string& sValue) {
    xml::IXMLDOMNodePtr oElement = Deref(oDoc).createElement(sName);
    oElement->text(sValue);
    Deref(oNode).appendChild(oElement);
    AppendIndent(oNode);
}

xml::IXMLDOMNodePtr NewElement(const xml::IXMLDOMNodePtr& ParentNode, const std::string& sName) {
    if (!ParentNode) return ParsedRoot("<" + sName + "/>");
    return ParentNode->appendChild(Deref(ParentNode->ownerDocument()).createElement(sName));
}

void AppendIndent(const xml::IXMLDOMNodePtr& oNode) {
    Deref(oNode).appendChild(Deref(oNode->ownerDocument()).createTextNode(kIndent));
}

xml::IXMLDOMNodePtr ParsedRoot(const std::string& text) {
    xml::IXMLDOMDocumentPtr oDoc = xml::DOMDocument::Create();
    oDoc->loadXML(text);
    return oDoc->documentElement();
}

std::string SelectedText(const xml::IXMLDOMNodePtr& Node, const std::string& XPath) {
    return Deref(Deref(Node).selectSingleNode(XPath)).text();
}

std::string clsClassificationRec::NodeName() const { return "ClassRec"; }

std::string clsClassificationRec::XML() const {
    return Guarded(Reported("XML"), [&] { return Deref(CreateNode(nullptr)).xml(); });
}

void clsClassificationRec::XML(const std::string& text) {
    Guarded(Reported("XML"), [&] { LoadNode(ParsedRoot(text)); });
}

xml::IXMLDOMNodePtr clsClassificationRec::CreateNode(const xml::IXMLDOMNodePtr& ParentNode) const {
    return Guarded(Reported("CreateNode"), [&] {
        xml::IXMLDOMNodePtr oNode = NewElement(ParentNode, NodeName());
        const xml::IXMLDOMDocumentPtr oDoc = Deref(oNode).ownerDocument();
        AppendIndent(oNode);
        NodeAppendAttribute(oDoc, oNode, "ID", std::to_string(ID));
        NodeAppendChildElement(oDoc, oNode, "Class", std::to_string(Class));
        for (const auto& [name, field] : kTextFields) {
            NodeAppendChildElement(oDoc, oNode, name, this->*field);
        }
        return oNode;
    });
}

void clsClassificationRec::LoadNode(const xml::IXMLDOMNodePtr& Node) {
    Guarded(Reported("LoadNode"), [&] {
        if (!Node) return;
        ID = runtime::CInt(GetNodeText(Node, "@ID"));
        Class = runtime::CInt(GetNodeText(Node, "Class"));
        for (const auto& [name, field] : kTextFields) this->*field = GetNodeText(Node, name);
    });
}

std::string clsClassificationRec::GetNodeText(const xml::IXMLDOMNodePtr& Node,
                                              const std::string& XPath) const {
    return Guarded(Reported("GetNodeText"), [&] { return SelectedText(Node, XPath); });
}

std::string clsClassificationRecs::NodeName() const { return "Classifications"; }

std::string clsClassificationRecs::XML() const { return Deref(CreateNode(nullptr)).xml(); }

void clsClassificationRecs::XML(const std::string& text) { LoadNode(ParsedRoot(text)); }

xml::IXMLDOMNodePtr clsClassificationRecs::CreateNode(const xml::IXMLDOMNodePtr& ParentNode) const {
    xml::IXMLDOMNodePtr oNode = NewElement(ParentNode, NodeName());
    for (const ClassificationRecPtr& record : records_) {
        AppendIndent(oNode);
        Deref(record).CreateNode(oNode);
    }
    AppendIndent(oNode);
    return oNode;
}

void clsClassificationRecs::LoadNode(const xml::IXMLDOMNodePtr& Node) {
    if (!Node) return;
    records_.clear();
    for (const xml::IXMLDOMNodePtr& hit : Node->selectNodes(clsClassificationRec().NodeName())) {
        auto record = std::make_shared<clsClassificationRec>();
        record->LoadNode(hit);
        Add(record);
    }
}

std::string clsClassificationRecs::GetNodeText(const xml::IXMLDOMNodePtr& Node,
                                               const std::string& XPath) const {
    return SelectedText(Node, XPath);
}

void clsClassificationRecs::Add(ClassificationRecPtr record) { records_.push_back(std::move(record)); }

std::size_t clsClassificationRecs::Position(std::int16_t index) const {
    // A collection refuses a position it doesn't hold as out of range (an
    // unknown key would be an invalid argument, but records have no key).
    if (index < 1 || static_cast<std::size_t>(index) > records_.size()) {
        throw runtime::RuntimeFailure(runtime::kSubscriptOutOfRange);
    }
    return static_cast<std::size_t>(index - 1);
}

ClassificationRecPtr clsClassificationRecs::Item(std::int16_t index) const {
    return records_[Position(index)];
}

void clsClassificationRecs::Item(std::int16_t index, ClassificationRecPtr record) {
    records_[Position(index)] = std::move(record);
}

void clsClassificationRecs::Remove(std::int16_t index) {
    records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(Position(index)));
}

}  // namespace halvane::classification
