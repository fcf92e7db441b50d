// dashboard.server: one line over all the others, made anew every second. Report and backup may be
// absent; the line says so.

#include <chrono>

#include "samples/board/Board.h"
#include "samples/board/Every.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "dashboard.server";

class Dashboard {
 public:
  explicit Dashboard(std::shared_ptr<LinkageService> linkage)
      : m_linkage(std::move(linkage)),
        m_report(board::Find<ReportService>()),
        m_backup(board::Find<BackupService>()) {}

 private:
  void Refresh() {
    const std::string line = (m_report ? m_report->Text() : "no report") +
                             ", actions: " + std::to_string(m_linkage->Fired()) + ", " +
                             (m_backup ? "last backup: " + m_backup->Last() : "no backup");
    if (line == m_line) return;
    m_line = line;
    IKPXFormatLog(board::kProgress, kPlugin, "%s", m_line.c_str());
  }

  const std::shared_ptr<LinkageService> m_linkage;
  const std::shared_ptr<ReportService> m_report;  // null: absent
  const std::shared_ptr<BackupService> m_backup;  // null: absent
  std::string m_line;                             // the thread's own
  Every m_refreshes{std::chrono::seconds(1), [this] { Refresh(); }};
};

std::unique_ptr<Dashboard> g_dashboard;

}  // namespace

bool Init() {
  const auto linkage = board::Need<LinkageService>(kPlugin);
  if (!linkage) return false;
  g_dashboard = std::make_unique<Dashboard>(linkage);
  return true;
}

bool UnInit() {
  g_dashboard.reset();
  return true;
}
