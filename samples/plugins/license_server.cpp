// license.server: what the site's licence permits, from the file data/licence.conf. The sample's
// licence has run out, so its Init fails: the plugins that depend on it must cope.

#include <ctime>
#include <iomanip>
#include <set>
#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/DataFiles.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "license.server";

class License : public LicenseService {
 public:
  /// Takes the names of the licensed features, between blanks.
  explicit License(const std::string& features) {
    std::istringstream words(features);
    for (std::string feature; words >> feature;) m_features.insert(feature);
  }

  bool Permits(const std::string& feature) const override { return m_features.count(feature) != 0; }

 private:
  std::set<std::string> m_features;
};

/// When a day, "2019-06-30", ends; nothing for what is no day.
std::optional<std::time_t> EndOf(const std::string& day) {
  std::tm end{};
  std::istringstream text(day);
  if (!(text >> std::get_time(&end, "%Y-%m-%d"))) return std::nullopt;
  ++end.tm_mday;
  end.tm_isdst = -1;
  return std::mktime(&end);
}

}  // namespace

bool Init() {
  const auto text = board::ReadData("licence.conf", kPlugin);
  if (!text) return false;
  auto values = board::ParseSettings(*text);
  const std::string lastDay = values["valid.until"];
  const auto end = EndOf(lastDay);
  if (!end) {
    IKPXFormatLog(board::kFailure, kPlugin,
                  "the licence in data/licence.conf has no line \"valid.until = YYYY-MM-DD\"");
    return false;
  }
  if (*end <= std::time(nullptr)) {
    IKPXFormatLog(board::kFailure, kPlugin, "the licence in data/licence.conf ran out on %s",
                  lastDay.c_str());
    return false;
  }
  IKPXFormatLog(board::kProgress, kPlugin, "licensed until %s: %s", lastDay.c_str(),
                values["features"].c_str());
  board::Publish<LicenseService>(std::make_shared<License>(values["features"]));
  return true;
}

bool UnInit() {
  board::Withdraw(LicenseService::kName);
  return true;
}
