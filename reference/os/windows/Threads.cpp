#include "reference/os/Threads.h"

#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

void PrepareWorkerThread() {}  // DllMain prepares every thread

void NameThread(const std::string& name) {
  using SetThreadDescriptionFn = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  // Only Windows 10 and later have it. Cast through void(*)(): FARPROC has another signature.
  static const auto setDescription =
      reinterpret_cast<SetThreadDescriptionFn>(reinterpret_cast<void (*)()>(
          GetProcAddress(GetModuleHandleW(L"kernelbase.dll"), "SetThreadDescription")));
  if (setDescription != nullptr) setDescription(GetCurrentThread(), WideFromLocal(name).c_str());
}

std::uint64_t ThreadNumber() {
  return GetCurrentThreadId();
}
