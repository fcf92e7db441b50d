#include "reference/os/UserFolders.h"

#include <shlobj.h>

#include <string>

#include "sdk/os/os.h"

namespace fs = std::filesystem;

namespace {

fs::path FromEnvironment(const wchar_t* name) {
  std::wstring value(MAX_PATH, L'\0');
  while (true) {
    const DWORD length = GetEnvironmentVariableW(name, &value[0], static_cast<DWORD>(value.size()));
    if (length < value.size()) {  // 0 when there is none
      value.resize(length);
      return value;
    }
    value.resize(length);
  }
}

/// Loads the shell's library at run time, since that takes long and is hardly ever needed.
fs::path FromShell() {
  using GetFolderFn = decltype(&SHGetFolderPathW);
  const HMODULE shell = LoadLibraryW(L"shell32.dll");
  if (shell == nullptr) return {};
  // Cast through void(*)(): FARPROC has another signature.
  const auto getFolder = reinterpret_cast<GetFolderFn>(
      reinterpret_cast<void (*)()>(GetProcAddress(shell, "SHGetFolderPathW")));
  wchar_t path[MAX_PATH] = {};
  const bool found = getFolder != nullptr && getFolder(nullptr, CSIDL_LOCAL_APPDATA, nullptr,
                                                       SHGFP_TYPE_CURRENT, path) == 0;
  FreeLibrary(shell);
  return found ? fs::path(path) : fs::path();
}

}  // namespace

fs::path UserStateFolder() {
  const fs::path folder = FromEnvironment(L"LOCALAPPDATA");
  return folder.is_absolute() ? folder : FromShell();
}
