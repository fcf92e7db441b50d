#include "src/PluginFrame/Plugin.h"

#include <memory>
#include <stdexcept>

#include "tests/support/FrameTest.h"

using PluginFrame::CPlugin;
using testing::ElementsAre;

namespace {

using PluginTest = FrameTest;

TEST_F(PluginTest, LoadsTheLibraryAtItsPathWithTheExtensionAdded) {
  seam.libraries["a.server"];
  {
    CPlugin plugin;
    EXPECT_EQ(nullptr, plugin.Handle());
    EXPECT_TRUE(plugin.Load("/p/a.server"));
    EXPECT_EQ(reinterpret_cast<HMODULE>(&seam.libraries["a.server"]), plugin.Handle());
  }
  EXPECT_THAT(seam.loadedPaths, ElementsAre("/p/a.server.dll"));
  EXPECT_EQ(0, seam.libraries["a.server"].handles);
  EXPECT_THAT(
      log.Brief(),
      ElementsAre("3 Load: [Plugin]start frame plugin Being path= [/p/a.server.dll]",
                  "3 Load: [Plugin]start frame plugin end success.path= [/p/a.server.dll]",
                  "3 ~CPlugin: [Plugin]FreeLibrary Begin", "3 ~CPlugin: [Plugin]FreeLibrary End"));
}

TEST_F(PluginTest, PathThatEndsInTheExtensionGetsASecondOne) {
  CPlugin plugin;
  plugin.Load("/p/a.dll");
  EXPECT_THAT(seam.loadedPaths, ElementsAre("/p/a.dll.dll"));
}

TEST_F(PluginTest, LibraryThatCannotBeLoadedIsFalseWithTheErrorCode) {
  seam.loadError = 193;
  {
    CPlugin plugin;
    EXPECT_FALSE(plugin.Load("/p/a"));
    EXPECT_EQ(nullptr, plugin.Handle());
  }
  EXPECT_THAT(log.Brief(), ElementsAre("3 Load: [Plugin]start frame plugin Being path= [/p/a.dll]",
                                       "5 Load: [Plugin]Get dynamic library handle failed.path= "
                                       "/p/a.dll,errorcode=193",
                                       "3 ~CPlugin: [Plugin]FreeLibrary Begin",
                                       "3 ~CPlugin: [Plugin]FreeLibrary End"));
}

TEST_F(PluginTest, EntriesReturnWhatTheLibrarysReturned) {
  for (const bool result : {false, true}) {
    seam.libraries["a"].init = [result] { return result; };
    seam.libraries["a"].uninit = [result] { return !result; };
    CPlugin plugin;
    plugin.Load("/p/a");
    Log::Instance().Clear();
    EXPECT_EQ(result, plugin.Init());
    EXPECT_EQ(!result, plugin.UnInit());
    EXPECT_THAT(log.Brief(), ElementsAre());
  }
}

TEST_F(PluginTest, EntriesOfALibraryThatIsNotLoadedAreFalse) {
  CPlugin plugin;
  EXPECT_FALSE(plugin.Init());
  EXPECT_FALSE(plugin.UnInit());
  EXPECT_THAT(log.Brief(),
              ElementsAre("5 Init: [Plugin]Get dynamic library Init symbol failed.",
                          "5 UnInit: [Plugin]Get dynamic library UnInit symbol failed."));
}

TEST_F(PluginTest, LibraryWithoutEntriesIsFalseAndStillFreed) {
  seam.libraries["a"].hasInit = false;
  seam.libraries["a"].hasUnInit = false;
  {
    CPlugin plugin;
    plugin.Load("/p/a");
    Log::Instance().Clear();
    EXPECT_FALSE(plugin.Init());
    EXPECT_FALSE(plugin.UnInit());
  }
  EXPECT_EQ(0, seam.libraries["a"].handles);
  EXPECT_THAT(
      log.Brief(),
      ElementsAre("5 Init: [Plugin]Get dynamic library Init symbol failed.",
                  "5 UnInit: [Plugin]Get dynamic library UnInit symbol failed.",
                  "3 ~CPlugin: [Plugin]FreeLibrary Begin", "3 ~CPlugin: [Plugin]FreeLibrary End"));
}

TEST_F(PluginTest, ExceptionInAnEntryIsFalseAndItsReasonIsLogged) {
  seam.libraries["a"].init = []() -> bool { throw std::runtime_error("no disk"); };
  seam.libraries["a"].uninit = []() -> bool { throw 7; };
  CPlugin plugin;
  plugin.Load("/p/a");
  Log::Instance().Clear();
  EXPECT_FALSE(plugin.Init());
  EXPECT_FALSE(plugin.UnInit());
  EXPECT_THAT(log.Brief(),
              ElementsAre("5 Init: [Plugin]Init threw [no disk]",
                          "5 UnInit: [Plugin]UnInit threw something that is no exception object"));
}

TEST_F(PluginTest, EachEntryCatchesEveryType) {
  seam.libraries["a"].init = []() -> bool { throw 7; };
  seam.libraries["a"].uninit = []() -> bool { throw std::runtime_error("still busy"); };
  CPlugin plugin;
  plugin.Load("/p/a");
  Log::Instance().Clear();
  EXPECT_FALSE(plugin.Init());
  EXPECT_FALSE(plugin.UnInit());
  EXPECT_THAT(log.Brief(),
              ElementsAre("5 Init: [Plugin]Init threw something that is no exception object",
                          "5 UnInit: [Plugin]UnInit threw [still busy]"));
}

TEST_F(PluginTest, LoadedTwiceHoldsItsLibraryOnce) {
  seam.libraries["a"];
  CPlugin plugin;
  plugin.Load("/p/a");
  plugin.Load("/p/a");
  EXPECT_EQ(1, seam.libraries["a"].handles);
}

TEST_F(PluginTest, SecondLoadThatFailsFreesNothing) {
  seam.libraries["a"];
  CPlugin plugin;
  plugin.Load("/p/a");
  seam.libraries["a"].loads = false;
  EXPECT_FALSE(plugin.Load("/p/a"));
  EXPECT_EQ(nullptr, plugin.Handle());
  EXPECT_EQ(1, seam.libraries["a"].handles);
}

}  // namespace
