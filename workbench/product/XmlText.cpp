#include "workbench/product/XmlText.h"

namespace {

constexpr std::size_t kMostBytes = 10'000'000;  // the same limit as in the frame
constexpr std::size_t kMostNodes = 10'000'000;

}  // namespace

bool XmlText::Append(const xmlNode* list) {
  for (const xmlNode* node = list; node != nullptr; node = node->next) {
    if (++m_nodes > kMostNodes) return false;
    if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
      if (node->content != nullptr) m_text += reinterpret_cast<const char*>(node->content);
    } else if (node->type == XML_ENTITY_REF_NODE) {
      const xmlEntity* entity = xmlGetDocEntity(m_document, node->name);
      if (entity != nullptr && !Append(entity->children)) return false;
    }
    if (m_text.size() > kMostBytes) return false;
  }
  return true;
}
