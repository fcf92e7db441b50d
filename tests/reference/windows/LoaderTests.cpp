// The error codes of the system's loader, from which the host and the logs derive their texts.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "reference/os/StopSignal.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "tests/support/TemporaryFolder.h"

namespace {

class Loader : public testing::Test {
 protected:
  Loader() { SuppressErrorDialogs(); }

  /// The error code of loading the library at `path`; 0 when it can be loaded.
  static DWORD Refusal(const std::string& path) {
    const HMODULE library = LoadLibraryW(LocalToWide(path).c_str());
    if (library == nullptr) return GetLastError();
    FreeLibrary(library);
    return 0;
  }

  TemporaryFolder m_folder;
};

TEST_F(Loader, NobodyIsAskedInABoxOnTheScreen) {
  const UINT silent = SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX;
  EXPECT_EQ(silent, GetErrorMode() & silent);
}

TEST_F(Loader, LibraryIsLoadedAndItsSymbolFound) {
  const HMODULE library = LoadLibraryW(LocalToWide(TEV_ANSWERS).c_str());
  ASSERT_NE(nullptr, library);
  const auto answer =
      reinterpret_cast<int (*)()>(reinterpret_cast<void (*)()>(GetProcAddress(library, "Answer")));
  ASSERT_NE(nullptr, answer);
  EXPECT_EQ(42, answer());
  EXPECT_EQ(nullptr, GetProcAddress(library, "Question"));
  EXPECT_EQ(DWORD{ERROR_PROC_NOT_FOUND}, GetLastError());
  EXPECT_NE(0, FreeLibrary(library));
}

TEST_F(Loader, LibraryThatNeedsAMissingOneIsNotFound) {
  std::filesystem::copy_file(TEV_NEEDS_A_LIBRARY, m_folder / "needs.dll");
  EXPECT_EQ(DWORD{ERROR_MOD_NOT_FOUND}, Refusal(m_folder / "needs.dll"));
}

TEST_F(Loader, LibraryForAnotherMachineIsNoLibrary) {
  std::filesystem::copy_file(TEV_ANSWERS, m_folder / "good.dll");
  std::string content = m_folder.Read("good.dll");
  const std::size_t header = content.find(std::string("PE\0\0", 4));
  ASSERT_NE(std::string::npos, header);
  content[header + 4] = static_cast<char>(IMAGE_FILE_MACHINE_ARM64 & 0xFF);
  content[header + 5] = static_cast<char>(IMAGE_FILE_MACHINE_ARM64 >> 8);
  EXPECT_EQ(DWORD{ERROR_BAD_EXE_FORMAT}, Refusal(m_folder.Write("a.dll", content)));
}

}  // namespace
