// license.server: checks until when the site may use the product. The sample's licence has run out,
// so its Init fails: the plugins that depend on it must cope.

#include <chrono>
#include <cstdio>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

/// Days from 1 January 1970 to a date of the Gregorian calendar.
std::int64_t DaysOf(int year, int month, int day) {
  const int shifted = month <= 2 ? year - 1 : year;  // years that begin in March
  const int era = shifted / 400;
  const int yearOfEra = shifted - era * 400;
  const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return static_cast<std::int64_t>(era) * 146097 + dayOfEra - 719468;
}

bool ValidUntil(const std::string& date) {
  int year = 0;
  int month = 0;
  int day = 0;
  if (std::sscanf(date.c_str(), "%d-%d-%d", &year, &month, &day) != 3) return false;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto today = std::chrono::duration_cast<std::chrono::hours>(now).count() / 24;
  return today <= DaysOf(year, month, day);
}

class License : public LicenseService {
 public:
  /// Takes the licensed features, each followed by a space.
  explicit License(std::string features) : m_features(std::move(features)) {}

  bool Permits(const std::string& feature) const override {
    return (' ' + m_features).find(' ' + feature + ' ') != std::string::npos;
  }

 private:
  const std::string m_features;
};

}  // namespace

bool Init() {
  const auto config = board::Find<ConfigService>();
  if (!config || !ValidUntil(config->Value("licence.until", ""))) return false;
  board::Publish<LicenseService>(
      std::make_shared<License>(config->Value("licence.features", "") + ' '));
  return true;
}

bool UnInit() {
  board::Withdraw(LicenseService::kName);
  return true;
}
