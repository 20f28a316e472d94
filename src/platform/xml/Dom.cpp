#include "platform/xml/Dom.h"

#include <sstream>

#include "platform/runtime/Failure.h"

namespace halvane::xml {
namespace {

// The DOM's own failures carry the generic failure number, like the raster
// engine's.
constexpr std::int32_t kXmlErrorNumber = -2147467259;
constexpr const char* kXmlSource = "Halvane XML";

runtime::Failure XmlFailure(std::string description) {
    return runtime::Failure(kXmlErrorNumber, kXmlSource, std::move(description));
}

void AppendText(const pugi::xml_node& node, std::string& out) {
    if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
        out += node.value();
        return;
    }
    for (const pugi::xml_node& child : node.children()) AppendText(child, out);
}

std::string EscapedAttributeValue(const std::string& value) {
    std::string out;
    for (char c : value) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

}  // namespace

IXMLDOMDocumentPtr DOMDocument::Create() { return IXMLDOMDocumentPtr(new DOMDocument()); }

bool DOMDocument::loadXML(const std::string& text) {
    const pugi::xml_parse_result result =
        doc_.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
    if (!result) doc_.reset();
    return static_cast<bool>(result);
}

bool DOMDocument::load(const std::string& path) {
    const pugi::xml_parse_result result = doc_.load_file(path.c_str());
    if (!result) doc_.reset();
    return static_cast<bool>(result);
}

void DOMDocument::save(const std::string& path) const {
    // Indented, so that a dictionary stays easy to read and edit by hand.
    const unsigned flags =
        pugi::format_indent | pugi::format_no_declaration | pugi::format_no_empty_element_tags;
    if (!doc_.save_file(path.c_str(), "\t", flags, pugi::encoding_utf8)) {
        throw XmlFailure("Cannot write the XML document to '" + path + "'");
    }
}

IXMLDOMNodePtr DOMDocument::documentElement() {
    const pugi::xml_node root = doc_.document_element();
    if (!root) return nullptr;
    return IXMLDOMNodePtr(new DOMNode(shared_from_this(), root));
}

IXMLDOMNodePtr DOMDocument::createElement(const std::string& name) {
    auto holder = std::make_shared<pugi::xml_document>();
    const pugi::xml_node node = holder->append_child(name.c_str());
    return IXMLDOMNodePtr(new DOMNode(shared_from_this(), node, {}, holder));
}

IXMLDOMNodePtr DOMDocument::createTextNode(const std::string& data) {
    auto holder = std::make_shared<pugi::xml_document>();
    pugi::xml_node node = holder->append_child(pugi::node_pcdata);
    node.set_value(data.c_str());
    return IXMLDOMNodePtr(new DOMNode(shared_from_this(), node, {}, holder));
}

IXMLDOMNodePtr DOMDocument::createAttribute(const std::string& name) {
    auto holder = std::make_shared<pugi::xml_document>();
    pugi::xml_node element = holder->append_child("attribute");
    const pugi::xml_attribute attribute = element.append_attribute(name.c_str());
    return IXMLDOMNodePtr(new DOMNode(shared_from_this(), element, attribute, holder));
}

DOMNode::DOMNode(IXMLDOMDocumentPtr owner, pugi::xml_node node, pugi::xml_attribute attribute,
                 std::shared_ptr<pugi::xml_document> detached)
    : owner_(std::move(owner)), detached_(std::move(detached)), node_(node),
      attribute_(attribute) {}

IXMLDOMNodePtr DOMNode::Make(IXMLDOMDocumentPtr owner, pugi::xpath_node hit) {
    if (hit.attribute()) return IXMLDOMNodePtr(new DOMNode(owner, hit.parent(), hit.attribute()));
    if (hit.node()) return IXMLDOMNodePtr(new DOMNode(owner, hit.node()));
    return nullptr;
}

IXMLDOMNodePtr DOMNode::appendChild(const IXMLDOMNodePtr& child) {
    const DOMNode& source = runtime::Deref(child);
    if (attribute_ || source.attribute_) throw XmlFailure("appendChild takes elements and text only");
    const pugi::xml_node placed =
        source.detached_ ? node_.append_copy(source.node_) : node_.append_move(source.node_);
    if (!placed) throw XmlFailure("Cannot append '" + source.xml() + "' here");
    return IXMLDOMNodePtr(new DOMNode(owner_, placed, {}, detached_));
}

IXMLDOMNodePtr DOMNode::selectSingleNode(const std::string& xpath) const {
    return Make(owner_, node_.select_node(xpath.c_str()));
}

std::vector<IXMLDOMNodePtr> DOMNode::selectNodes(const std::string& xpath) const {
    std::vector<IXMLDOMNodePtr> hits;
    for (const pugi::xpath_node& hit : node_.select_nodes(xpath.c_str())) {
        hits.push_back(Make(owner_, hit));
    }
    return hits;
}

std::string DOMNode::text() const {
    if (attribute_) return attribute_.value();
    std::string out;
    AppendText(node_, out);
    return out;
}

void DOMNode::text(const std::string& value) {
    if (attribute_ || node_.type() != pugi::node_element) {
        nodeValue(value);
        return;
    }
    while (node_.first_child()) node_.remove_child(node_.first_child());
    if (!value.empty()) node_.append_child(pugi::node_pcdata).set_value(value.c_str());
}

std::string DOMNode::xml() const {
    if (attribute_) {
        return std::string(attribute_.name()) + "=\"" + EscapedAttributeValue(attribute_.value()) +
               "\"";
    }
    std::ostringstream out;
    node_.print(out, "", pugi::format_raw | pugi::format_no_empty_element_tags);
    return out.str();
}

IXMLDOMNodePtr DOMNode::setNamedItem(const IXMLDOMNodePtr& attribute) {
    const DOMNode& source = runtime::Deref(attribute);
    if (!source.attribute_ || attribute_) throw XmlFailure("setNamedItem takes an attribute");
    pugi::xml_attribute placed = node_.attribute(source.attribute_.name());
    if (!placed) placed = node_.append_attribute(source.attribute_.name());
    placed.set_value(source.attribute_.value());
    return IXMLDOMNodePtr(new DOMNode(owner_, node_, placed, detached_));
}

std::string DOMNode::nodeValue() const {
    if (attribute_) return attribute_.value();
    return node_.type() == pugi::node_element ? "" : node_.value();
}

void DOMNode::nodeValue(const std::string& value) {
    if (attribute_) {
        attribute_.set_value(value.c_str());
    } else if (node_.type() != pugi::node_element) {
        node_.set_value(value.c_str());
    } else {
        throw XmlFailure("An element has no value of its own");
    }
}

}  // namespace halvane::xml
