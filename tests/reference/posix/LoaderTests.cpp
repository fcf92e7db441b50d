#include <dlfcn.h>
#include <elf.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "reference/base/Log.h"
#include "reference/os/LoaderLog.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/// While an object exists, a process of root has another user's permissions: root may read every
/// file.
class AsNobody {
 public:
  AsNobody() {
    if (m_wasRoot) Become(65534);
  }
  ~AsNobody() {
    if (m_wasRoot) Become(0);
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;

 private:
  static void Become(uid_t user) { EXPECT_EQ(0, seteuid(user)); }

  const bool m_wasRoot = geteuid() == 0;
};

class Loader : public testing::Test {
 protected:
  Loader() {
    ConfigureLog({0, ""});
    SetLogObserver([this](int level, const std::string& module, const std::string& text) {
      m_lines.push_back(std::to_string(level) + " " + module + " " + text);
    });
  }
  ~Loader() override { SetLogObserver({}); }

  /// The error code of loading the library at `path`; 0 when it can be loaded.
  static DWORD Refusal(const std::string& path) {
    const HMODULE library = LoadLibraryW(LocalToWide(path).c_str());
    if (library == nullptr) return GetLastError();
    FreeLibrary(library);
    return 0;
  }

  std::string Copy(const char* library, const std::string& name) const {
    std::filesystem::copy_file(library, m_folder / name);
    return m_folder / name;
  }

  TemporaryFolder m_folder;
  std::vector<std::string> m_lines;
};

TEST_F(Loader, LibraryIsLoadedAndItsSymbolFound) {
  const HMODULE library = LoadLibraryW(LocalToWide(TEV_ANSWERS).c_str());
  ASSERT_NE(nullptr, library);
  const auto answer = reinterpret_cast<int (*)()>(GetProcAddress(library, "Answer"));
  ASSERT_NE(nullptr, answer);
  EXPECT_EQ(42, answer());
  EXPECT_NE(0, FreeLibrary(library));
  EXPECT_THAT(m_lines, ElementsAre());
}

TEST_F(Loader, SymbolsOfALibraryStayItsOwn) {
  const HMODULE library = LoadLibraryW(LocalToWide(TEV_ANSWERS).c_str());
  ASSERT_NE(nullptr, library);
  EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "Answer"));
  FreeLibrary(library);
}

TEST_F(Loader, LibraryMayWaitForItsThreadWhileItLoads) {
  const HMODULE library = LoadLibraryW(LocalToWide(TEV_WAITS_FOR_ITS_THREAD).c_str());
  ASSERT_NE(nullptr, library);
  const auto ran = reinterpret_cast<bool (*)()>(GetProcAddress(library, "ThreadRan"));
  ASSERT_NE(nullptr, ran);
  EXPECT_TRUE(ran());
}

TEST_F(Loader, FileNameOutsideTheCodePageIsFound) {
  const std::string path = Copy(TEV_ANSWERS, "caf\xe9 \xff\xc3\xa9.dll");
  EXPECT_EQ(0U, Refusal(path));
}

TEST_F(Loader, MissingFileNamedLikeAnotherReasonIsModuleNotFound) {
  EXPECT_EQ(ERROR_MOD_NOT_FOUND, Refusal(m_folder / "a: undefined symbol: b.dll"));
}

TEST_F(Loader, EmptyPathIsModuleNotFound) {
  EXPECT_EQ(ERROR_MOD_NOT_FOUND, Refusal(""));
}

TEST_F(Loader, MissingNeededLibraryIsModuleNotFoundAndNamed) {
  const std::string path = Copy(TEV_NEEDS_A_LIBRARY, "a.dll");
  EXPECT_EQ(ERROR_MOD_NOT_FOUND, Refusal(path));
  EXPECT_THAT(m_lines, ElementsAre(HasSubstr(path + ": libreference_answers.so: ")));
}

TEST_F(Loader, UndefinedSymbolIsProcedureNotFoundAndNamed) {
  const std::string path = Copy(TEV_NEEDS_A_SYMBOL, "a.dll");
  EXPECT_EQ(ERROR_PROC_NOT_FOUND, Refusal(path));
  EXPECT_EQ(
      std::vector<std::string>({"5 platform.os " + path + ": undefined symbol: WhatNobodyDefines"}),
      m_lines);
}

TEST_F(Loader, TextFileIsNoLibrary) {
  const std::string path = m_folder.Write("a.dll", std::string(4096, 'x'));
  EXPECT_EQ(ERROR_BAD_EXE_FORMAT, Refusal(path));
  EXPECT_THAT(m_lines, ElementsAre("5 platform.os " + path + ": invalid ELF header"));
}

TEST_F(Loader, EmptyFileIsNoLibrary) {
  EXPECT_EQ(ERROR_BAD_EXE_FORMAT, Refusal(m_folder.Write("a.dll", "")));
}

TEST_F(Loader, DirectoryIsNoLibrary) {
  std::filesystem::create_directory(m_folder / "a.dll");
  EXPECT_EQ(ERROR_BAD_EXE_FORMAT, Refusal(m_folder / "a.dll"));
}

TEST_F(Loader, LibraryForAnotherMachineIsNoLibrary) {
  Copy(TEV_ANSWERS, "a.dll");
  std::string content = m_folder.Read("a.dll");
  content[offsetof(Elf64_Ehdr, e_machine)] = static_cast<char>(EM_S390);
  EXPECT_EQ(ERROR_BAD_EXE_FORMAT, Refusal(m_folder.Write("a.dll", content)));
}

TEST_F(Loader, LibraryOfAnotherWordSizeIsNoLibrary) {
  Copy(TEV_ANSWERS, "a.dll");
  std::string content = m_folder.Read("a.dll");
  content[EI_CLASS] = ELFCLASS32;
  EXPECT_EQ(ERROR_BAD_EXE_FORMAT, Refusal(m_folder.Write("a.dll", content)));
}

TEST_F(Loader, UnreadableLibraryIsAccessDenied) {
  const std::string path = Copy(TEV_ANSWERS, "a.dll");
  std::filesystem::permissions(path, std::filesystem::perms::none);
  const AsNobody asNobody;
  EXPECT_EQ(ERROR_ACCESS_DENIED, Refusal(path));
}

TEST_F(Loader, EachRefusalIsLoggedOnceWithThePathOnce) {
  const std::string path = m_folder / "none.dll";
  Refusal(path);
  ASSERT_EQ(1U, m_lines.size());
  EXPECT_THAT(m_lines[0], StartsWith("5 platform.os " + path + ": "));
  EXPECT_EQ(m_lines[0].find(path), m_lines[0].rfind(path));
}

}  // namespace
