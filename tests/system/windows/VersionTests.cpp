// The version information of the library, as the system's file properties show it.

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "sdk/os/os.h"

namespace {

TEST(VersionResource, NamesTheLibraryAndItsVersion) {
  const std::wstring file = std::filesystem::path(TEV_FRAME).make_preferred().wstring();
  const DWORD size = GetFileVersionInfoSizeW(file.c_str(), nullptr);
  ASSERT_NE(0U, size);
  std::vector<unsigned char> resource(size);
  ASSERT_NE(0, GetFileVersionInfoW(file.c_str(), 0, size, resource.data()));
  const auto text = [&resource](const std::wstring& name) {
    void* value = nullptr;
    UINT length = 0;
    const std::wstring block = L"\\StringFileInfo\\040904B0\\" + name;
    if (VerQueryValueW(resource.data(), block.c_str(), &value, &length) == 0) return std::wstring();
    return std::wstring(static_cast<const wchar_t*>(value));
  };
  EXPECT_EQ(L"TevPluginFrame.dll", text(L"OriginalFilename"));
  EXPECT_EQ(L"" TEV_VERSION, text(L"ProductVersion"));
  EXPECT_NE(L"", text(L"FileDescription"));
}

}  // namespace
