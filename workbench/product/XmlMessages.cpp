#include "workbench/product/XmlMessages.h"

#include <cstddef>
#include <new>

namespace {

/// `message` without trailing whitespace, and with blanks for line breaks and tabs.
std::string OneLine(std::string message) {
  const std::size_t last = message.find_last_not_of(" \t\r\n");
  message.resize(last == std::string::npos ? 0 : last + 1);
  for (char& c : message) {
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  }
  return message;
}

}  // namespace

XmlMessages::XmlMessages() : m_handler(xmlStructuredError), m_context(xmlStructuredErrorContext) {
  xmlSetStructuredErrorFunc(this, &XmlMessages::OnMessage);
}

XmlMessages::~XmlMessages() {
  xmlSetStructuredErrorFunc(m_context, m_handler);
}

void XmlMessages::ThrowIfOutOfMemory() const {
  if (m_outOfMemory) throw std::bad_alloc();
}

void XmlMessages::Keep(int code, int level, const char* message, int line, int column) noexcept {
  if (code == XML_ERR_NO_MEMORY) m_outOfMemory = true;
  if (level != XML_ERR_FATAL || !m_first.empty()) return;
  try {
    m_first = OneLine(message == nullptr ? "" : message);
    m_line = line;
    m_column = column;
  } catch (const std::bad_alloc&) {  // no exception may pass through libxml2's C code
    m_outOfMemory = true;
  }
}
