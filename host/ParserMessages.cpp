#include "host/ParserMessages.h"

#include <libxml/xmlerror.h>

#include <cstdarg>
#include <cstdio>
#include <string>

#include "sdk/base/log.h"

namespace {

constexpr char kModule[] = "xml";
constexpr int kTolerated = 4;

/// Each call gets one whole message: "file:line: text\n".
// NOLINTNEXTLINE(cert-dcl50-cpp): the parser's interface
[[gnu::format(printf, 2, 3)]] void Log(void*, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length < 0 ? 0 : static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, again);
  va_end(again);
  va_end(arguments);
  text.resize(text.find_last_not_of(std::string("\n\0", 2)) + 1);
  if (!text.empty()) IKPXFormatLog(kTolerated, kModule, "%s", text.c_str());
}

}  // namespace

ParserMessages::ParserMessages() {
  xmlSetGenericErrorFunc(nullptr, &Log);
}

ParserMessages::~ParserMessages() {
  xmlSetGenericErrorFunc(nullptr, nullptr);
}
