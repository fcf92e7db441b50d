#include "workbench/product/LoaderCache.h"

#include <cstdint>

#include "workbench/product/FileBytes.h"

namespace {

constexpr char kMagic[] = "glibc-ld.so.cache1.1";
constexpr std::uint64_t kHeaderSize = 48;
constexpr std::uint64_t kCount = 20;  // offset in the header
constexpr std::uint64_t kEntrySize = 24;
constexpr std::uint64_t kKey = 4;  // offset in an entry, as the next one
constexpr std::uint64_t kValue = 8;

}  // namespace

std::unordered_map<std::string, std::vector<std::string>> ReadLoaderCache(
    const std::filesystem::path& file) {
  std::unordered_map<std::string, std::vector<std::string>> cache;
  FileBytes bytes(file);
  if (!bytes.IsOpen()) return cache;
  try {
    const std::string magic = kMagic;
    if (bytes.Bytes(0, magic.size()) != magic) return cache;
    const std::uint64_t count = bytes.Number(kCount, 4);
    std::uint64_t textBytes = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t entry = kHeaderSize + i * kEntrySize;
      std::string name;
      std::string path;
      bytes.AppendText(bytes.Number(entry + kKey, 4), name);
      bytes.AppendText(bytes.Number(entry + kValue, 4), path);
      textBytes += name.size() + path.size();
      if (textBytes > bytes.Size()) break;  // texts of a valid cache do not overlap so much
      cache[name].push_back(std::move(path));
    }
  } catch (const FileBytes::Broken&) {  // what was read until there is used
  }
  return cache;
}
