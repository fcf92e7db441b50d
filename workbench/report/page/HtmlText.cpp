#include "workbench/report/page/HtmlText.h"

#include "workbench/output/Text.h"

namespace {

std::string WithEntities(const std::string& text) {
  std::string html;
  html.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

}  // namespace

std::string HtmlText(const std::string& text) {
  return WithEntities(Escaped(text));
}

std::string HtmlID(const std::string& id) {
  return WithEntities(ShownID(id));
}

std::string HtmlNames(const std::vector<std::string>& ids, std::size_t most) {
  return WithEntities(JoinNames(ids, most));
}
