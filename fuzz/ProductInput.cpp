#include "fuzz/ProductInput.h"

#include <algorithm>
#include <array>

#include "fuzz/FuzzTarget.h"

namespace {

constexpr std::array<const char*, 14> kFiles = {"Product.xml",
                                                "bin/META_INFO/DeviceDrivers.xml",
                                                "bin/META_INFO/Portal.xml",
                                                "bin/META_INFO/Platform.xml",
                                                "bin/META_INFO/a/a.xml",
                                                "bin/META_INFO/b/b.xml",
                                                "bin/META_INFO/c/c.xml",
                                                "bin/TevAddons/InstalledProducts.xml",
                                                "bin/TevAddons/A/A.xml",
                                                "bin/TevAddons/T/T.xml",
                                                "ProductAddons.xml",
                                                "ProductTools.xml",
                                                "bin/a.dll",
                                                "bin/b.dll"};

}  // namespace

void LayOutProduct(const std::string& input) {
  const FuzzFolder& folder = FuzzFolder::Instance();
  folder.Clear();
  std::size_t begin = 0;
  for (const char* file : kFiles) {
    if (begin > input.size()) return;
    const std::size_t end = std::min(input.find("\n==\n", begin), input.size());
    if (end > begin) folder.Write(file, input.substr(begin, end - begin));
    begin = end + 4;
  }
}
