// config.server: the site's settings, from the file data/site.conf.

#include "samples/board/Board.h"
#include "samples/board/DataFiles.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "config.server";

class Config : public ConfigService {
 public:
  explicit Config(std::map<std::string, std::string> values) : m_values(std::move(values)) {}

  std::string Value(const std::string& key, const std::string& fallback) const override {
    const auto value = m_values.find(key);
    return value == m_values.end() ? fallback : value->second;
  }

 private:
  const std::map<std::string, std::string> m_values;
};

}  // namespace

bool Init() {
  const auto text = board::ReadData("site.conf", kPlugin);
  if (!text) return false;
  const auto config = std::make_shared<Config>(board::ParseSettings(*text));
  IKPXFormatLog(board::kProgress, kPlugin, "the settings of %s",
                config->Value("site.name", "a site without a name").c_str());
  board::Publish<ConfigService>(config);
  return true;
}

bool UnInit() {
  board::Withdraw(ConfigService::kName);
  return true;
}
