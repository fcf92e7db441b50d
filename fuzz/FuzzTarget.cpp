#include "fuzz/FuzzTarget.h"

#include <libxml/xmlerror.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>

#include "reference/base/Log.h"
#include "reference/xrt/ExecutablePath.h"

namespace fs = std::filesystem;

namespace {

/// Formats libxml2's messages, of which there are millions, but prints none.
[[gnu::format(printf, 2, 3)]] void DiscardMessage(void*, const char* format, ...) {
  char text[256];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
}

}  // namespace

void Check(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

FuzzFolder& FuzzFolder::Instance() {
  static FuzzFolder folder;
  return folder;
}

FuzzFolder::FuzzFolder() {
  const fs::path memory = "/dev/shm";
  std::random_device random;
  m_root = (fs::exists(memory) ? memory : fs::temp_directory_path()) /
           ("tevfuzz." + std::to_string(random()));
  Clear();
  ConfigureLog({0, ""});
  xmlSetGenericErrorFunc(nullptr, &DiscardMessage);
  SetExecutablePath(Path("bin/HUB"));
}

FuzzFolder::~FuzzFolder() {
  std::error_code ignored;
  fs::remove_all(m_root, ignored);
}

std::string FuzzFolder::Write(const std::string& name, const std::string& content) const {
  const fs::path file = m_root / name;
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
  return file.generic_string();
}

void FuzzFolder::Clear() const {
  fs::remove_all(m_root);
  fs::create_directories(m_root / "bin" / "META_INFO");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
