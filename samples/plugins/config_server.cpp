// config.server: the site's settings, from "key = value" lines with comments.

#include <map>
#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kSettings[] =
    "# settings of the sample site\n"
    "site.name = North Harbour\n"
    "alarm.limit = 100\n"
    "licence.until = 2019-06-30   # renew in time\n"
    "licence.features = report.hours\n";

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string::npos) return std::string();
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

class Config : public ConfigService {
 public:
  explicit Config(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      line = line.substr(0, line.find('#'));
      const std::size_t equals = line.find('=');
      if (equals == std::string::npos) continue;
      m_values[Trimmed(line.substr(0, equals))] = Trimmed(line.substr(equals + 1));
    }
  }

  std::string Value(const std::string& key, const std::string& fallback) const override {
    const auto value = m_values.find(key);
    return value == m_values.end() ? fallback : value->second;
  }

 private:
  std::map<std::string, std::string> m_values;
};

}  // namespace

bool Init() {
  const auto config = std::make_shared<Config>(kSettings);
  board::Publish<ConfigService>(config);
  return config->Value("site.name", "") == "North Harbour";
}

bool UnInit() {
  board::Withdraw(ConfigService::kName);
  return true;
}
