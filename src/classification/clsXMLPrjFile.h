#pragma once
// A classification dictionary as a document: its title, description and
// records, read from and written to the XML file with the root ClassDict.

#include <memory>
#include <string>

#include "classification/clsClassificationRec.h"

namespace halvane::classification {

class clsXMLPrjFile {
public:
    std::string PrjName;
    std::string PRJDescription;
    ClassificationRecsPtr Classifications = std::make_shared<clsClassificationRecs>();
    // A record a caller may fill here; never written by itself.
    ClassificationRecPtr ClassRec = std::make_shared<clsClassificationRec>();

    std::string NodeName() const;
    std::string XML() const;
    // A value holding ".xml" (case-sensitive, anywhere) is loaded as a file,
    // any other as XML text. Nothing that fails to load is reported: the
    // object then keeps what it held.
    void XML(const std::string& value);
    // Parses the XML text again and saves that document; a failed write goes
    // to the caller.
    void SaveFile(const std::string& path) const;
    xml::IXMLDOMNodePtr CreateNode(const xml::IXMLDOMNodePtr& ParentNode) const;
    // Reads the children of Node, whatever its name; a null Node changes
    // nothing, and without a Classifications child the records stay.
    void LoadNode(const xml::IXMLDOMNodePtr& Node);
    // The text at XPath below Node, or empty, silently.
    std::string GetNodeText(const xml::IXMLDOMNodePtr& Node, const std::string& XPath) const;
};

using XMLPrjFilePtr = std::shared_ptr<clsXMLPrjFile>;

// "def_dict.xml" in the component's own folder, the only place it is looked
// for (share/halvane/ when installed: see ResourceFolder).
std::string DefaultDictionaryPath();

}  // namespace halvane::classification
