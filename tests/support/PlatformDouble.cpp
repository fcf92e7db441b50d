#include "tests/support/PlatformDouble.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::int32_t kRefused = 1;

/// Copies `source` into `text` of `size` bytes, zero-terminated, as much as fits.
void CopyText(const std::string& source, char* text, std::int32_t size) {
  if (text == nullptr || size <= 0) return;
  const std::size_t length = std::min(source.size(), static_cast<std::size_t>(size) - 1);
  std::memcpy(text, source.data(), length);
  text[length] = '\0';
}

}  // namespace

PlatformDouble::~PlatformDouble() {
  if (m_starter.joinable()) m_starter.join();
}

std::int32_t PlatformDouble::Init() {
  if (m_up) return Refuse("the platform is up already");
  m_up = true;
  return 0;
}

std::int32_t PlatformDouble::Start(KPXStartFinishFn finished) {
  if (finished == nullptr) return Refuse("no callback was given");
  if (!m_up) return Refuse("the platform is not up");
  if (m_starter.joinable()) return Refuse("the platform is started already");
  m_starter = std::thread([finished] {
    StartedPluginMap started;
    finished(&started);
  });
  return 0;
}

std::int32_t PlatformDouble::Stop() {
  if (!m_starter.joinable()) return Refuse("the platform is not started");
  m_starter.join();
  return 0;
}

std::int32_t PlatformDouble::UnInit() {
  if (!m_up) return Refuse("the platform is not up");
  m_up = false;
  return 0;
}

std::int32_t PlatformDouble::GetLastError(char* text, std::int32_t size) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  CopyText(m_error, text, size);
  return m_error.empty() ? 0 : kRefused;
}

std::int32_t PlatformDouble::GetVersion(char* text, std::int32_t size) {
  const std::string version = "2.6.1";
  CopyText(version, text, size);
  return static_cast<std::int32_t>(version.size());
}

std::int32_t PlatformDouble::Refuse(const std::string& reason) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_error = reason;
  return kRefused;
}

std::int32_t LpcDouble::Init() {
  return m_up.exchange(true) ? kRefused : 0;
}

std::int32_t LpcDouble::UnInit() {
  return m_up.exchange(false) ? 0 : kRefused;
}
