// storage.server: a key-value store in memory that is rebuilt from its journal.

#include <map>
#include <mutex>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Storage : public StorageService {
 public:
  void Put(const std::string& key, const std::string& value) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_journal.emplace_back(key, value);
    m_values[key] = value;
  }

  std::string Get(const std::string& key) const override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto value = m_values.find(key);
    return value == m_values.end() ? std::string() : value->second;
  }

  /// Whether playing the journal back gives the values as they stand.
  bool Consistent() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::map<std::string, std::string> replayed;
    for (const auto& entry : m_journal) replayed[entry.first] = entry.second;
    return replayed == m_values;
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<std::pair<std::string, std::string>> m_journal;  // guarded by m_mutex
  std::map<std::string, std::string> m_values;                 // guarded by m_mutex
};

std::shared_ptr<Storage> g_storage;

}  // namespace

bool Init() {
  const auto config = board::Find<ConfigService>();
  if (!config) return false;
  g_storage = std::make_shared<Storage>();
  g_storage->Put("site", config->Value("site.name", "unnamed"));
  board::Publish<StorageService>(g_storage);
  return g_storage->Consistent();
}

bool UnInit() {
  board::Withdraw(StorageService::kName);
  const bool consistent = !g_storage || g_storage->Consistent();  // none: Init found no settings
  g_storage.reset();
  return consistent;
}
