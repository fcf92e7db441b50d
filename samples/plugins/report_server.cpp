// report.server: the day's figures. It can do without a licence, which it then leaves its hours out
// for.

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

struct Figures {
  double mean = 0;
  int median = 0;
  int worst = 0;
};

Figures Summary(std::vector<int> perHour) {
  std::sort(perHour.begin(), perHour.end());
  Figures figures;
  figures.mean =
      std::accumulate(perHour.begin(), perHour.end(), 0.0) / static_cast<double>(perHour.size());
  figures.median = perHour[perHour.size() / 2];
  figures.worst = perHour.back();
  return figures;
}

class Report : public ReportService {
 public:
  /// `alarmsPerHour`: at least one.
  Report(std::vector<int> alarmsPerHour, bool withHours)
      : m_alarmsPerHour(std::move(alarmsPerHour)), m_withHours(withHours) {}

  std::string Text() const override {
    const Figures figures = Summary(m_alarmsPerHour);
    char mean[32];
    std::snprintf(mean, sizeof mean, "%.1f", figures.mean);
    std::string text = std::string("mean ") + mean + ", median " + std::to_string(figures.median) +
                       ", worst " + std::to_string(figures.worst);
    if (!m_withHours) return text;
    for (const int alarms : m_alarmsPerHour) text += ' ' + std::to_string(alarms);
    return text;
  }

 private:
  const std::vector<int> m_alarmsPerHour;
  const bool m_withHours;
};

}  // namespace

bool Init() {
  const auto alarms = board::Find<AlarmService>();
  if (!alarms) return false;
  const auto license = board::Find<LicenseService>();
  const bool licensed = license && license->Permits("report.hours");
  const int now = static_cast<int>(alarms->Open());
  board::Publish<ReportService>(
      std::make_shared<Report>(std::vector<int>{3, 1, 2, 9, 0, now}, licensed));
  const std::string figures = "mean 3.0, median 2, worst 9";
  return Report({3, 1, 2, 9, 0}, false).Text() == figures &&
         Report({3, 1, 2, 9, 0}, true).Text() == figures + " 3 1 2 9 0";
}

bool UnInit() {
  board::Withdraw(ReportService::kName);
  return true;
}
