#pragma once

#include "sdk/os/os.h"

/// Makes `process` handle a console event as it does when its console has one: on a thread of its
/// own that begins where the console's would. So no console is needed. False when refused.
inline bool RaiseConsoleEvent(HANDLE process, DWORD kind) {
  const FARPROC routine = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "CtrlRoutine");
  const HANDLE thread = CreateRemoteThread(
      process, nullptr, 0,
      reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void (*)()>(routine)),
      reinterpret_cast<void*>(static_cast<std::size_t>(kind)), 0, nullptr);
  if (thread == nullptr) return false;
  CloseHandle(thread);
  return true;
}
