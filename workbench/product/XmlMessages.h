#pragma once

#include <libxml/xmlerror.h>

#include <string>

/// Receives libxml2's messages on this thread while it exists, and keeps the first fatal one, which
/// says why a document is not well-formed.
class XmlMessages {
 public:
  XmlMessages();
  ~XmlMessages();
  XmlMessages(const XmlMessages&) = delete;
  XmlMessages& operator=(const XmlMessages&) = delete;

  /// libxml2 returns null for "not well-formed" and for "out of memory".
  void ThrowIfOutOfMemory() const;

  // The first fatal message, in one line, and its place; empty and 0 when there was none.
  const std::string& First() const { return m_first; }
  int Line() const { return m_line; }
  int Column() const { return m_column; }

 private:
  // A template because the error is const from libxml2 2.12 on.
  template <typename Error>
  static void OnMessage(void* self, Error* error) noexcept {
    static_cast<XmlMessages*>(self)->Keep(error->code, error->level, error->message, error->line,
                                          error->int2);
  }

  void Keep(int code, int level, const char* message, int line, int column) noexcept;

  const xmlStructuredErrorFunc m_handler;  // the previous one, which is restored
  void* const m_context;
  std::string m_first;
  int m_line = 0;
  int m_column = 0;
  bool m_outOfMemory = false;
};
