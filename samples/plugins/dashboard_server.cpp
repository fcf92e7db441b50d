// dashboard.server: one page over all the others, filled into a template. The report and the backup
// may be absent; the page says so.

#include <map>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

/// Replaces each {name} by its value; an unknown name stays as it is.
std::string Render(const std::string& page, const std::map<std::string, std::string>& values) {
  std::string rendered;
  std::size_t at = 0;
  while (at < page.size()) {
    const std::size_t open = page.find('{', at);
    const std::size_t close = page.find('}', open);
    if (open == std::string::npos || close == std::string::npos) break;
    rendered += page.substr(at, open - at);
    const auto value = values.find(page.substr(open + 1, close - open - 1));
    rendered += value == values.end() ? page.substr(open, close - open + 1) : value->second;
    at = close + 1;
  }
  return rendered + page.substr(at);
}

}  // namespace

bool Init() {
  const auto linkage = board::Find<LinkageService>();
  if (!linkage) return false;
  const auto report = board::Find<ReportService>();
  const auto backup = board::Find<BackupService>();
  const std::string page = Render("{actions} fired; {report}; {backup}",
                                  {{"actions", std::to_string(linkage->Fired())},
                                   {"report", report ? report->Text() : "no report"},
                                   {"backup", backup ? backup->Last() : "no backup"}});
  return page.find('{') == std::string::npos && Render("a {b} c{d", {{"b", "x"}}) == "a x c{d";
}

bool UnInit() {
  return true;
}
