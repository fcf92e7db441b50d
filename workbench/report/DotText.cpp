#include "workbench/report/DotText.h"

namespace {

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at)) {
    text.replace(at, what.size(), by);
    at += by.size();
  }
  return text;
}

std::string WithoutNoncharacters(const std::string& text) {
  return Replaced(Replaced(text, "\xEF\xBF\xBE", "\\ufffe"), "\xEF\xBF\xBF", "\\uffff");
}

}  // namespace

std::string DotQuoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : WithoutNoncharacters(text)) {
    if (c == '\n') {
      quoted += "\\n";
    } else if (c == '&') {
      quoted += "&amp;";
    } else {
      if (c == '"' || c == '\\') quoted += '\\';
      quoted += c;
    }
  }
  return quoted + '"';
}

std::string DotBold(const std::string& text) {
  const std::string shown = WithoutNoncharacters(text);
  std::string html = "<B>";
  for (std::size_t i = 0; i < shown.size(); ++i) {
    switch (shown[i]) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '\\':
        // \N is replaced in these labels too, unless its characters are not in one element. No
        // way of writing a backslash prevents that.
        html += i + 1 < shown.size() ? "\\</B><B>" : "\\";
        break;
      default:
        html += shown[i];
    }
  }
  return html + "</B>";
}
