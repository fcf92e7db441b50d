#include "workbench/product/LoaderCache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace {

/// "NAME => PATH" of each line that `ldconfig -p` prints.
std::vector<std::pair<std::string, std::string>> EntriesOfLdconfig() {
  // NOLINTNEXTLINE(bugprone-command-processor,cert-env33-c): our own command
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen("/sbin/ldconfig -p", "r"), pclose);
  std::vector<std::pair<std::string, std::string>> entries;
  char line[4096];
  while (std::fgets(line, sizeof(line), pipe.get()) != nullptr) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    const std::string text = line;
    const std::size_t arrow = text.find("=> ");
    if (arrow != std::string::npos) {
      entries.emplace_back(name, text.substr(arrow + 3, text.size() - arrow - 4));
    }
  }
  return entries;
}

TEST(LoaderCache, HasWhatLdconfigPrints) {
  const auto cache = ReadLoaderCache("/etc/ld.so.cache");
  std::size_t count = 0;
  for (const auto& [name, paths] : cache) count += paths.size();
  const auto entries = EntriesOfLdconfig();
  EXPECT_EQ(entries.size(), count);
  EXPECT_GT(count, 10U);
  for (const auto& [name, path] : entries) {
    const auto found = cache.find(name);
    ASSERT_NE(cache.end(), found) << name;
    EXPECT_EQ(1, std::count(found->second.begin(), found->second.end(), path)) << path;
  }
}

TEST(LoaderCache, CutOrDamagedHasLess) {
  const TemporaryFolder folder;
  EXPECT_TRUE(ReadLoaderCache(folder / "absent").empty());
  EXPECT_TRUE(ReadLoaderCache(folder.Write("empty", "")).empty());
  std::string cache = "glibc-ld.so.cache1.1" + std::string(28, '\0');
  cache[20] = 2;  // entries
  cache += std::string(4, '\0') + "\x60" + std::string(3, '\0') + "\x64" + std::string(15, '\0');
  cache +=
      std::string(4, '\0') + "\x60" + std::string(3, '\0') + "\xFF\xFF" + std::string(14, '\0');
  cache += std::string("a.s\0/a\0", 7);
  const auto read = ReadLoaderCache(folder.Write("cache", cache));
  ASSERT_EQ(1U, read.size());
  EXPECT_EQ(std::vector<std::string>{"/a"}, read.at("a.s"));
}

}  // namespace
