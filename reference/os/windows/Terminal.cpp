#include "reference/os/Terminal.h"

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdio>
#include <system_error>

#include "sdk/os/os.h"

#ifndef ENABLE_VIRTUAL_TERMINAL_PROCESSING
#define ENABLE_VIRTUAL_TERMINAL_PROCESSING 0x0004
#endif

namespace {

constexpr int kInput = 0;
constexpr int kOutput = 1;
constexpr int kError = 2;

[[noreturn]] void Refuse(const char* what) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

HANDLE HandleOf(SystemFile file) {
  return reinterpret_cast<HANDLE>(file);
}

/// In a process without a console the handle of an unconnected stream is -2.
bool IsOpen(int descriptor) {
  const intptr_t handle = _get_osfhandle(descriptor);
  return handle != -1 && handle != -2;
}

/// Opens the null device as `descriptor` if that is closed. True when it was closed.
bool OpenIfClosed(int descriptor) {
  if (IsOpen(descriptor)) return false;
  const int null = _open("NUL", _O_RDWR);
  if (null < 0) Refuse("the null device cannot be opened");
  if (null != descriptor) {
    const int result = _dup2(null, descriptor);
    _close(null);
    if (result != 0) Refuse("a standard descriptor cannot be opened");
  }
  return true;
}

/// Sets the system's standard handle to that of the C runtime's descriptor.
void SetStandardHandle(DWORD which, int descriptor) {
  SetStdHandle(which, HandleOf(_get_osfhandle(descriptor)));
}

bool TurnSequencesOn(HANDLE file) {
  DWORD mode = 0;
  if (GetConsoleMode(file, &mode) == 0) return false;
  return SetConsoleMode(file, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

/// Writes UTF-16, which the console accepts with any code page.
bool WriteToConsole(HANDLE console, std::string_view text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0');  // never longer than in UTF-8
  wide.resize(
      static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, &wide[0], size)));
  constexpr std::size_t most = 8192;  // older consoles refuse longer writes
  for (std::size_t at = 0; at < wide.size();) {
    DWORD written = 0;
    const auto count = static_cast<DWORD>(std::min(most, wide.size() - at));
    if (WriteConsoleW(console, &wide[at], count, &written, nullptr) == 0) return false;
    at += written;
  }
  return true;
}

}  // namespace

OwnOutput::OwnOutput() {
  OpenIfClosed(kInput);
  const bool wasClosed = OpenIfClosed(kOutput);
  OpenIfClosed(kError);
  if (wasClosed) {
    Fail(ERROR_INVALID_HANDLE);
  } else {
    HANDLE own = nullptr;
    const HANDLE process = GetCurrentProcess();
    const HANDLE output = HandleOf(_get_osfhandle(kOutput));
    if (DuplicateHandle(process, output, process, &own, 0, FALSE, DUPLICATE_SAME_ACCESS) == 0) {
      Refuse("standard output cannot be duplicated");
    }
    m_file = reinterpret_cast<SystemFile>(own);
    m_isTerminal = TurnSequencesOn(own);
    DWORD mode = 0;  // only its success counts: a process has only one console
    m_isTerminalOfErrors =
        m_isTerminal && GetConsoleMode(HandleOf(_get_osfhandle(kError)), &mode) != 0;
  }
  if (_dup2(kError, kOutput) != 0) Refuse("standard output cannot be redirected");
  SetStandardHandle(STD_INPUT_HANDLE, kInput);
  SetStandardHandle(STD_OUTPUT_HANDLE, kOutput);
  SetStandardHandle(STD_ERROR_HANDLE, kError);
}

OwnOutput::~OwnOutput() {
  if (m_file != kNoFile) CloseHandle(HandleOf(m_file));
}

bool OwnOutput::Write(std::string_view text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_failed) return false;
  const bool written =
      m_isTerminal ? WriteToConsole(HandleOf(m_file), text) : WriteWhole(m_file, text, kForEver);
  if (!written) Fail(static_cast<int>(GetLastError()));
  return written;
}

void OwnOutput::Fail(int code) {
  m_error = std::system_category().message(code);
  m_failed = true;
}

int OwnOutput::Columns() const {
  constexpr int unknown = 80;
  CONSOLE_SCREEN_BUFFER_INFO console = {};
  if (GetConsoleScreenBufferInfo(HandleOf(m_file), &console) == 0) return unknown;
  const int width = console.srWindow.Right - console.srWindow.Left + 1;
  return width > 0 ? width : unknown;
}
