// A whole product. The input is split at each line "==" into the files named below, in that order;
// a file without a piece, or with an empty one, is missing. Then the frame initialises the product
// and passes it to the platform.

#include <array>

#include "fuzz/FuzzTarget.h"
#include "reference/kpx/PlatformRecord.h"
#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"
#include "src/PluginFrame/PluginManager.h"
#include "src/private/RunningProduct.h"

namespace {

constexpr std::array<const char*, 12> kFiles = {"Product.xml",
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
                                                "ProductTools.xml"};

void LayOut(const std::string& input) {
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

}  // namespace

void Fuzz(const std::string& input) {
  LayOut(input);
  g_productName.clear();
  g_productVersion.clear();
  KPX_Init();
  const bool came = PluginFrame::CPluginManager().Init();
  const PlatformRecord record = SnapshotPlatform();
  Check(!came || (record.productModel && record.addons && record.tools && record.plugins),
        "a product that comes up is handed over whole");
  if (came) {
    Check(record.plugins->size() <= record.productModel->ServerPluginDescriptions.size() +
                                        record.productModel->ExePluginDescriptions.size() +
                                        record.productModel->DriverPluginDescriptions.size() +
                                        record.productModel->SubPlatforms.size(),
          "no plugin is told of that the product does not have");
  }
  TevLPCFrameUnInit();
  KPX_UnInit();
}
