#include "reference/os/Modules.h"

#include <gtest/gtest.h>

#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

namespace {

const int g_ownData = 0;

bool Holds(const std::optional<ModuleRange>& range, std::uintptr_t address) {
  return range && range->begin <= address && address < range->end;
}

TEST(LoadedModule, HoldsItsCodeAndDataUntilItIsUnloaded) {
  EXPECT_FALSE(LoadedModule(TEV_ANSWERS));
  const HMODULE library = LoadLibraryW(WideFromLocal(TEV_ANSWERS).c_str());
  ASSERT_NE(nullptr, library);
  const std::optional<ModuleRange> range = LoadedModule(TEV_ANSWERS);
  EXPECT_TRUE(Holds(range, reinterpret_cast<std::uintptr_t>(GetProcAddress(library, "Answer"))));
  EXPECT_TRUE(Holds(range, reinterpret_cast<std::uintptr_t>(GetProcAddress(library, "g_answer"))));
  EXPECT_FALSE(Holds(range, reinterpret_cast<std::uintptr_t>(&g_ownData)));
  FreeLibrary(library);
  EXPECT_FALSE(LoadedModule(TEV_ANSWERS));
}

TEST(LoadedModule, NoPathIsNoModule) {
  EXPECT_FALSE(LoadedModule(""));
  EXPECT_FALSE(LoadedModule(TEV_ANSWERS ".none"));
}

}  // namespace
