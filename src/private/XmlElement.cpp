#include "src/private/XmlElement.h"

#include <utility>

namespace TevModelParse {

XmlElement::XmlElement(const CXmlProto& document, std::string path)
    : m_document(&document), m_path(std::move(path)) {}

XmlElement XmlElement::Child(const char* name) const {
  return XmlElement(*m_document, PathOf(name));
}

XmlElements XmlElement::Children(const char* name) const {
  return XmlElements(*m_document, PathOf(name));
}

std::string XmlElement::Text(const char* name, const char* fallback) const {
  return m_document->GetNodeText(PathOf(name), fallback);
}

std::int32_t XmlElement::Int(const char* name, std::int32_t fallback) const {
  return m_document->GetNodeInt(PathOf(name), fallback);
}

bool XmlElement::Flag(const char* name) const {
  return Int(name, 0) == 1;
}

std::string XmlElement::Attribute(const char* name, const char* fallback) const {
  return m_document->GetNodeProp(m_path, name, fallback);
}

std::string XmlElement::PathOf(const char* name) const {
  return m_path + '/' + name;
}

XmlElements::XmlElements(const CXmlProto& document, std::string path)
    : m_document(&document), m_path(std::move(path)), m_count(document.GetNodeCount(m_path)) {}

XmlElements::Iterator::Iterator(const XmlElements& list, std::int32_t position)
    : m_list(&list), m_position(position) {}

XmlElement XmlElements::Iterator::operator*() const {
  return XmlElement(*m_list->m_document, m_list->m_path + "[" + std::to_string(m_position) + "]");
}

XmlElements::Iterator& XmlElements::Iterator::operator++() {
  ++m_position;
  return *this;
}

}  // namespace TevModelParse
