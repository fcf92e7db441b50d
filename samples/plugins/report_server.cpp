// report.server: the alarms in words. It works without a licence, but then leaves the details out.

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "report.server";

class Report : public ReportService {
 public:
  Report(std::shared_ptr<AlarmService> alarms, bool withDetails)
      : m_alarms(std::move(alarms)), m_withDetails(withDetails) {}

  std::string Text() const override {
    const auto open = m_alarms->Open();
    std::string text = "open alarms: " + std::to_string(open.size());
    if (!m_withDetails) return text;
    for (const AlarmService::Alarm& alarm : open) text += ", " + alarm.text;
    return text;
  }

 private:
  const std::shared_ptr<AlarmService> m_alarms;
  const bool m_withDetails;
};

}  // namespace

bool Init() {
  const auto alarms = board::Need<AlarmService>(kPlugin);
  if (!alarms) return false;
  const auto license = board::Find<LicenseService>();
  const bool licensed = license && license->Permits("report.details");
  if (!licensed) {
    IKPXFormatLog(board::kTolerated, kPlugin, "reports without details: they are not licensed");
  }
  board::Publish<ReportService>(std::make_shared<Report>(alarms, licensed));
  return true;
}

bool UnInit() {
  board::Withdraw(ReportService::kName);
  return true;
}
