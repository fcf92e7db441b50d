// Information from the system on the process, its threads and its user.

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "reference/os/LocalText.h"
#include "reference/os/ProcessInfo.h"
#include "reference/os/Threads.h"
#include "reference/os/UserFolders.h"
#include "sdk/os/os.h"

namespace {

TEST(ThreadName, IsTheGivenOne) {
  using GetThreadDescriptionFn = HRESULT(WINAPI*)(HANDLE, PWSTR*);
  const auto getDescription = reinterpret_cast<GetThreadDescriptionFn>(reinterpret_cast<void (*)()>(
      GetProcAddress(GetModuleHandleW(L"kernelbase.dll"), "GetThreadDescription")));
  NameThread("report.server");
  ASSERT_NE(nullptr, getDescription);
  PWSTR name = nullptr;
  ASSERT_GE(getDescription(GetCurrentThread(), &name), 0);
  EXPECT_EQ(L"report.server", std::wstring(name));
  LocalFree(name);
}

TEST(ThreadNumber, IsTheSystems) {
  EXPECT_EQ(GetCurrentThreadId(), ThreadNumber());
}

TEST(EveryThread, HasAReserveForAnOverflowOfItsStack) {
  ULONG reserve = 0;  // 0 changes nothing; the call returns the current value
  std::thread([&reserve] { SetThreadStackGuarantee(&reserve); }).join();
  EXPECT_EQ(64U * 1024, reserve);
}

TEST(ProcessInfo, IsTheSystems) {
  EXPECT_EQ(GetCurrentProcessId(), ProcessNumber());
  wchar_t name[256] = {};
  DWORD size = 256;
  ASSERT_NE(0, GetComputerNameExW(ComputerNameDnsHostname, name, &size));
  EXPECT_EQ(LocalFromWide(name), HostName());
  EXPECT_NE("", HostName());
}

TEST(UsableCores, AreThoseThatTheProcessMayUse) {
  ASSERT_NE(0, SetProcessAffinityMask(GetCurrentProcess(), 1));
  EXPECT_EQ(1, UsableCores());
}

TEST(UserStateFolder, IsTheEnvironmentsOrElseTheSystems) {
  const std::filesystem::path before = UserStateFolder();
  EXPECT_TRUE(before.is_absolute());
  SetEnvironmentVariableW(L"LOCALAPPDATA", L"C:\\state");
  EXPECT_EQ(std::filesystem::path(L"C:\\state"), UserStateFolder());
  for (const wchar_t* none : {L"state", static_cast<const wchar_t*>(nullptr)}) {
    SetEnvironmentVariableW(L"LOCALAPPDATA", none);
    EXPECT_EQ(before, UserStateFolder());
  }
}

}  // namespace
