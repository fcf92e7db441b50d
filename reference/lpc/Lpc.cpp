#include "sdk/lpc/lpc.h"

#include <mutex>

#include "reference/lpc/LpcRecord.h"

namespace {

constexpr std::int32_t kAlreadyUp = 1;
constexpr std::int32_t kNotUp = 2;
constexpr std::int32_t kNoName = 3;

/// The framework's state; `mutex` guards `record`.
struct Framework {
  std::mutex mutex;
  LpcRecord record;
};

/// Never destroyed: a plugin that has not returned may still call while the process ends.
Framework& TheFramework() {
  static Framework& framework = *new Framework;
  return framework;
}

}  // namespace

std::int32_t TevLPCFrameInit(const std::string& name, const PlatformInfo& info) {
  Framework& framework = TheFramework();
  const std::lock_guard<std::mutex> lock(framework.mutex);
  if (name.empty()) return kNoName;
  if (framework.record.up) return kAlreadyUp;
  framework.record = LpcRecord{true, name, info, {}};
  return 0;
}

void TevLPCFrameNotifyStartPlugins(const std::string& text) {
  Framework& framework = TheFramework();
  const std::lock_guard<std::mutex> lock(framework.mutex);
  framework.record.notified.push_back(text);
}

std::int32_t TevLPCFrameUnInit() {
  Framework& framework = TheFramework();
  const std::lock_guard<std::mutex> lock(framework.mutex);
  if (!framework.record.up) return kNotUp;
  framework.record.up = false;
  return 0;
}

LpcRecord SnapshotLpc() {
  Framework& framework = TheFramework();
  const std::lock_guard<std::mutex> lock(framework.mutex);
  return framework.record;
}
