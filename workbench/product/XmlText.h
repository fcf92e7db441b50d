#pragma once

#include <libxml/tree.h>

#include <cstddef>
#include <string>

/// Concatenates the texts of a node list, with entities replaced, up to a limit: a small file can
/// expand to gigabytes by naming one long entity again and again.
class XmlText {
 public:
  explicit XmlText(const xmlDoc* document) : m_document(document) {}

  /// False when the limit is exceeded. Recurses as deep as entities nest, which libxml2 limits
  /// to 40.
  bool Append(const xmlNode* list);

  const std::string& Text() const { return m_text; }

 private:
  const xmlDoc* m_document;
  std::string m_text;
  std::size_t m_nodes = 0;
};
