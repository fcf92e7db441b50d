#include "tests/reference/Program.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "sdk/os/os.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// Creates a file whose handle child processes inherit.
HANDLE Inherited(const std::filesystem::path& file) {
  SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  return CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                     CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

ProgramEnd RunProgram(const std::string& program, const std::string& argument) {
  const TemporaryFolder folder;
  STARTUPINFOW start = {};
  start.cb = sizeof(start);
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  start.hStdOutput = Inherited(folder.Path() / "output");
  start.hStdError = Inherited(folder.Path() / "errors");
  const std::filesystem::path path(program);
  std::wstring line = L"\"" + path.wstring() + L"\" " + std::filesystem::path(argument).wstring();
  PROCESS_INFORMATION process = {};
  EXPECT_TRUE(CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                             &process))
      << program;
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD status = 0;
  GetExitCodeProcess(process.hProcess, &status);
  for (const HANDLE handle :
       {process.hProcess, process.hThread, start.hStdOutput, start.hStdError}) {
    CloseHandle(handle);
  }
  return {"status " + std::to_string(status), folder.Read("output"), folder.Read("errors")};
}
