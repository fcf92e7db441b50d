#include "tests/contract/LoaderTest.h"

namespace {

using PosixLoader = LoaderTest;

TEST_F(PosixLoader, FindsALibraryWhateverBytesItsNameHas) {
  const char* const names[] = {"caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80", "caf\xe9 \xff",
                               "\xed\xb2\x80", "\xc0\xaf", "cut \xe2\x82"};
  for (const char* name : names) {
    EXPECT_EQ(0U, Refusal(subject->AddLibrary(name))) << name;
  }
}

TEST_F(PosixLoader, RefusesANullHandle) {
  EXPECT_EQ(nullptr, Find(nullptr, "Init"));
  EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
  Refusal(subject->PathOf("none"));
  EXPECT_EQ(0, FreeLibrary(nullptr));
  EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
}

}  // namespace
