#pragma once

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <memory>
#include <string>
#include <vector>

/// The XML of a model file, parsed and queried as in the frame, with line numbers.
///
/// A text that is not well-formed reads as empty: queries find no element, and Problem says why.
/// libxml2's messages are not printed. Not thread-safe. Throws only std::bad_alloc.
class XmlFile {
 public:
  /// `text`: the file's bytes, read as UTF-8 even if they declare another encoding.
  explicit XmlFile(const std::string& text);

  /// Why the text is not well-formed, in one line, and the line number; empty when it is.
  const std::string& Problem() const { return m_problem; }
  int ProblemLine() const { return m_problemLine; }

  struct Root {
    std::string name;
    std::string space;  // its namespace; empty for none
    int line = 0;
  };
  Root RootElement() const;

  int Count(const std::string& expression) const;

  // Each returns a value of the first element that matches `expression`; `fallback` or 0 when there
  // is no such element or value.
  std::string Text(const std::string& expression, const std::string& fallback) const;
  std::string Attribute(const std::string& expression, const std::string& name,
                        const std::string& fallback) const;
  int Line(const std::string& expression) const;

 private:
  struct FreeDocument {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  };
  struct FreeMatches {
    void operator()(xmlXPathObject* matches) const { xmlXPathFreeObject(matches); }
  };
  using Matches = std::unique_ptr<xmlXPathObject, FreeMatches>;

  Matches Evaluate(const std::string& expression) const;
  std::string TextOf(const xmlNode* list, const std::string& fallback) const;

  std::unique_ptr<xmlDoc, FreeDocument> m_document;  // null when not well-formed
  std::string m_problem;
  int m_problemLine = 0;
};

/// One element of a list, found by its position as in the frame.
struct XmlListElement {
  std::string path;     // its XPath expression
  int line = 0;         // of the element, or of the second section when it is hidden
  bool hidden = false;  // counted, but no section has an element at this position
};

/// An entry for each `element` in all sections `section`. Each is looked up by its position, which
/// in XPath counts inside each section.
std::vector<XmlListElement> ListElements(const XmlFile& file, const std::string& section,
                                         const std::string& element);
