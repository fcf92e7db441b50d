#include "reference/os/ProcessInfo.h"

#include <algorithm>
#include <bitset>

#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

std::uint64_t ProcessNumber() {
  return GetCurrentProcessId();
}

std::string HostName() {
  wchar_t name[256] = {};
  DWORD size = 256;
  if (GetComputerNameExW(ComputerNameDnsHostname, name, &size) == 0) return "";
  return LocalFromWide(name);
}

int UsableCores() {
  DWORD_PTR own = 0;
  DWORD_PTR all = 0;
  GetProcessAffinityMask(GetCurrentProcess(), &own, &all);
  // The mask is 0 for a process in several processor groups, each with up to 64 processors.
  const int count = own != 0 ? static_cast<int>(std::bitset<64>(own).count())
                             : static_cast<int>(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS));
  return std::max(1, count);
}
