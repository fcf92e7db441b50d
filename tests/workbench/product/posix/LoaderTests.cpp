// Tests the reasons with the real messages of the system's loader.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/TemporaryFolder.h"
#include "workbench/product/Libraries.h"

namespace fs = std::filesystem;

namespace {

const LocalNames kNames = {[](const std::string& local) { return fs::path(local); },
                           [](const fs::path& path) { return path.string(); }};

/// Why `library` cannot be loaded; "loaded" when it can.
std::string Why(const fs::path& library) {
  if (void* loaded = dlopen(library.c_str(), RTLD_NOW)) {
    dlclose(loaded);
    return "loaded";
  }
  return WhyNotLoaded(library, dlerror(), {"/proc/self/exe", {}}, kNames);
}

class Loader : public testing::Test {
 protected:
  /// A copy of the library, without an RPATH, that needs TEV_ANSWERS.
  fs::path Plugin() const {
    fs::copy_file(TEV_WITHOUT_RPATH, folder.Path() / "plugin.dll");
    return folder.Path() / "plugin.dll";
  }

  const std::string needed = fs::path(TEV_ANSWERS).filename().string();
  TemporaryFolder folder;
};

TEST_F(Loader, DoesNotFindNeededLibraryBesideIt) {
  fs::copy_file(TEV_ANSWERS, folder.Path() / needed);
  EXPECT_EQ("needs " + needed +
                ", which lies beside it but is not looked for there: link the plugin with an "
                "RPATH of $ORIGIN",
            Why(Plugin()));
}

TEST_F(Loader, FindsNeededLibraryNowhere) {
  EXPECT_EQ("needs " + needed + ", which is in no folder where the loader looks", Why(Plugin()));
}

TEST_F(Loader, DoesNotFindNeededLibraryWithOtherCase) {
  fs::copy_file(TEV_ANSWERS, folder.Path() / "LIBREFERENCE_ANSWERS.so");
  EXPECT_EQ("needs " + needed +
                ", which is in no folder where the loader looks; there is "
                "LIBREFERENCE_ANSWERS.so, with other letter case",
            Why(Plugin()));
}

TEST_F(Loader, DoesNotFindPluginWithOtherCase) {
  folder.Write("Plugin.dll", "");
  const fs::path wanted = folder.Path() / "plugin.dll";
  EXPECT_EQ(wanted.string() + " does not exist; there is Plugin.dll, with other letter case",
            Why(wanted));
}

TEST_F(Loader, SaysItselfWhichSymbolIsMissing) {
  const std::string why = Why(TEV_NEEDS_A_SYMBOL);
  EXPECT_NE(std::string::npos, why.find("undefined symbol: ")) << why;
}

TEST_F(Loader, KeepsItsWordsOfWhatIsNoRegularFile) {
  const fs::path pipe = folder.Path() / "plugin.dll";
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  EXPECT_EQ("words", WhyNotLoaded(pipe, "words", {"/proc/self/exe", {}}, kNames));
}

}  // namespace
