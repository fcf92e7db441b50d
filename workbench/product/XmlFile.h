#pragma once

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <memory>
#include <string>
#include <vector>

/// One model file's XML as the frame parses and addresses it, with lines.
///
/// What is not well-formed holds nothing: queries find no element, and Problem says why. libxml2's
/// messages go nowhere else. Not thread-safe. Throws std::bad_alloc alone.
class XmlFile {
 public:
  /// `text`: the file's bytes, which are read as UTF-8 whatever they declare.
  explicit XmlFile(const std::string& text);

  /// What is not well-formed, without a line break, and in which line; empty when nothing is.
  const std::string& Problem() const { return m_problem; }
  int ProblemLine() const { return m_problemLine; }

  struct Root {
    std::string name;
    std::string space;  // its namespace; empty for none
    int line = 0;
  };
  Root RootElement() const;

  int Count(const std::string& expression) const;

  /// Of the first element that matches; `fallback` or 0 when there is none or it has no such value.
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

/// One element of a list as the frame addresses it.
struct XmlListElement {
  std::string path;     // the expression to ask for
  int line = 0;         // of the element, or of the second section when it is hidden
  bool hidden = false;  // counted, but no section has an element of this number
};

/// The `element`s in all sections `section`: as many as there are, each asked for by its position,
/// which counts inside each section.
std::vector<XmlListElement> ListElements(const XmlFile& file, const std::string& section,
                                         const std::string& element);
