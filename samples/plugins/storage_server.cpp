// storage.server: the site's tables, which it reads from the data files that the settings name.

#include <map>
#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/DataFiles.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "storage.server";

class Storage : public StorageService {
 public:
  explicit Storage(std::map<std::string, std::string> tables) : m_tables(std::move(tables)) {}

  std::string Table(const std::string& name) const override {
    const auto table = m_tables.find(name);
    return table == m_tables.end() ? std::string() : table->second;
  }

 private:
  const std::map<std::string, std::string> m_tables;
};

}  // namespace

bool Init() {
  const auto config = board::Need<ConfigService>(kPlugin);
  if (!config) return false;
  const std::string names = config->Value("storage.tables", "");
  std::map<std::string, std::string> tables;
  std::istringstream words(names);
  for (std::string name; words >> name;) {
    auto text = board::ReadData(name + ".txt", kPlugin);
    if (!text) return false;
    tables[name] = std::move(*text);
  }
  IKPXFormatLog(board::kProgress, kPlugin, "the tables %s", names.c_str());
  board::Publish<StorageService>(std::make_shared<Storage>(std::move(tables)));
  return true;
}

bool UnInit() {
  board::Withdraw(StorageService::kName);
  return true;
}
