#include "stub/OwnLibrary.h"

#include "sdk/os/os.h"

namespace {

std::wstring OwnPath() {
  static const char inThisLibrary = 0;
  HMODULE module = nullptr;
  if (GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<LPCWSTR>(&inThisLibrary), &module) == 0) {
    return std::wstring();
  }
  std::wstring path(260, L'\0');
  while (true) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) return path.substr(0, length);
    path.resize(path.size() * 2);
  }
}

/// Names of stubs are ASCII; another character becomes a question mark, which no name has.
std::string Ascii(const std::wstring& text) {
  std::string ascii;
  for (const wchar_t c : text) ascii += c < 0x80 ? static_cast<char>(c) : '?';
  return ascii;
}

}  // namespace

std::string OwnName() {
  const std::wstring path = OwnPath();
  const std::wstring name = path.substr(path.find_last_of(L"/\\") + 1);
  return Ascii(name.substr(0, name.find_last_of(L'.')));
}

std::FILE* OpenBesideLibrary(const std::string& name) {
  const std::wstring path = OwnPath();
  const std::wstring folder = path.substr(0, path.find_last_of(L"/\\") + 1);
  return _wfopen((folder + std::wstring(name.begin(), name.end())).c_str(), L"rb");
}
