#pragma once

#include "sdk/os/os.h"

/// Makes `process` handle a console event without a console: starts a thread in it at the function
/// at which the system would start its own. False when that fails.
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
