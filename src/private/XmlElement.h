#pragma once

#include <cstdint>
#include <string>

#include "src/private/XmlProto.h"

namespace TevModelParse {

class XmlElements;

/// A document and the absolute path of an element in it: what a reader asks for values.
///
/// Plain value; the document must outlive it. Each call that reads a value is one query. If several
/// elements match, the first is read; if none does, the fallback is returned.
class XmlElement {
 public:
  XmlElement(const CXmlProto& document, std::string path);

  const CXmlProto& Document() const { return *m_document; }
  const std::string& Path() const { return m_path; }

  /// The child element `name`, and all child elements of that name.
  XmlElement Child(const char* name) const;
  XmlElements Children(const char* name) const;

  /// The text of the child element `name`.
  std::string Text(const char* name, const char* fallback = "") const;

  /// That text as a number.
  std::int32_t Int(const char* name, std::int32_t fallback) const;

  /// Whether that number is 1.
  bool Flag(const char* name) const;

  /// The element's own attribute `name`.
  std::string Attribute(const char* name, const char* fallback = "") const;

 private:
  std::string PathOf(const char* name) const;

  const CXmlProto* m_document;
  std::string m_path;
};

/// All elements at one path, counted when this is made: a range of XmlElement, each with the path
/// PATH[POSITION], the position counted from 1.
///
/// XPath counts positions inside each parent. When the elements have several parents, one path may
/// therefore match several of them, of which the first is read, and the last paths may match none.
class XmlElements {
 public:
  class Iterator {
   public:
    Iterator(const XmlElements& list, std::int32_t position);

    XmlElement operator*() const;
    Iterator& operator++();
    bool operator!=(const Iterator& other) const { return m_position != other.m_position; }

   private:
    const XmlElements* m_list;
    std::int32_t m_position;
  };

  XmlElements(const CXmlProto& document, std::string path);

  std::int32_t Count() const { return m_count; }
  Iterator begin() const { return Iterator(*this, 1); }
  Iterator end() const { return Iterator(*this, m_count + 1); }

 private:
  const CXmlProto* m_document;
  std::string m_path;
  std::int32_t m_count;
};

}  // namespace TevModelParse
