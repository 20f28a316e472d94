#include "classification/clsXMLPrjFile.h"

#include "platform/reporting/ErrorHandling.h"
#include "platform/reporting/HTMLHelp.h"
#include "platform/runtime/Failure.h"
#include "platform/runtime/Text.h"

namespace halvane::classification {

using runtime::Deref;

std::string clsXMLPrjFile::NodeName() const { return "ClassDict"; }

std::string clsXMLPrjFile::XML() const { return Deref(CreateNode(nullptr)).xml(); }

void clsXMLPrjFile::XML(const std::string& value) {
    xml::IXMLDOMDocumentPtr oDoc = xml::DOMDocument::Create();
    if (value.find(".xml") == std::string::npos) {
        oDoc->loadXML(value);
    } else {
        oDoc->load(value);
    }
    LoadNode(oDoc->documentElement());
}

void clsXMLPrjFile::SaveFile(const std::string& path) const {
    xml::IXMLDOMDocumentPtr oDoc = xml::DOMDocument::Create();
    oDoc->loadXML(XML());
    oDoc->save(path);
}

xml::IXMLDOMNodePtr clsXMLPrjFile::CreateNode(const xml::IXMLDOMNodePtr& ParentNode) const {
    xml::IXMLDOMNodePtr oNode = NewElement(ParentNode, NodeName());
    const xml::IXMLDOMDocumentPtr oDoc = Deref(oNode).ownerDocument();
    AppendIndent(oNode);
    AppendChildElement(oDoc, oNode, "PrjName", PrjName);
    AppendChildElement(oDoc, oNode, "PRJDescription", PRJDescription);
    AppendIndent(oNode);
    Deref(Classifications).CreateNode(oNode);
    return oNode;
}

void clsXMLPrjFile::LoadNode(const xml::IXMLDOMNodePtr& Node) {
    if (!Node) return;
    PrjName = GetNodeText(Node, "PrjName");
    PRJDescription = GetNodeText(Node, "PRJDescription");
    Deref(Classifications).LoadNode(Node->selectSingleNode(Classifications->NodeName()));
}

std::string clsXMLPrjFile::GetNodeText(const xml::IXMLDOMNodePtr& Node,
                                       const std::string& XPath) const {
    return WithHandler([&] { return SelectedText(Node, XPath); }, [](const runtime::Failure&) {});
}

std::string DefaultDictionaryPath() {
    return ResourceFolder() + runtime::kPathSeparator + "def_dict.xml";
}

}  // namespace halvane::classification
