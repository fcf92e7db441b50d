#include "reference/os/LocalText.h"

#include "sdk/os/os.h"

std::wstring WideFromLocal(const std::string& text) {
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), size, &wide[0], length);
  return wide;
}

std::string LocalFromWide(const std::wstring& text) {
  const int size = static_cast<int>(text.size());
  const int length =
      WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string local(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), size, &local[0], length, nullptr, nullptr);
  return local;
}

std::filesystem::path PathFromLocal(const std::string& text) {
  return WideFromLocal(text);
}

std::string LocalFromPath(const std::filesystem::path& path) {
  return LocalFromWide(path.wstring());
}
