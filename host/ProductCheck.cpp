#include "host/ProductCheck.h"

#include <future>
#include <utility>

#include "host/PluginHeads.h"
#include "host/ProductReading.h"
#include "reference/os/LocalText.h"
#include "reference/xrt/ExecutablePath.h"
#include "sdk/lpc/lpc.h"
#include "workbench/check/PackageReader.h"
#include "workbench/product/XmlThreads.h"

HandedOver HandedOverOf(PlatformRecord platform) {
  return {std::move(*platform.productModel), platform.addons.value_or(std::vector<AddonModel>()),
          platform.tools.value_or(std::vector<ToolModel>())};
}

std::unique_ptr<CheckedProduct> ReadProductWithFrame(const ProductPlace& place,
                                                     std::int32_t runningModule,
                                                     const FrameLibrary& frame) {
  const LocalNames names = SystemNames();
  SetExecutablePath(LocalFromPath(place.folder / PathFromLocal(place.bin) / "HUB"));
  PrepareXmlForThreads();
  auto reading = std::async(std::launch::async, [&] {
    std::unique_ptr<CheckedProduct> product = ReadCheckedProduct(place, names, runningModule);
    ReadPackages(*product, place, names);
    return product;
  });
  const std::int32_t result = InitialiseFrame(frame);
  std::unique_ptr<CheckedProduct> product = reading.get();
  if (result != 0) return product;
  PlatformRecord platform = SnapshotPlatform();
  // The frame does this only in Frame_Stop, and could not initialise again in this process.
  TevLPCFrameUnInit();
  frame.UnInit();
  if (platform.productModel) UseModel(*product, HandedOverOf(std::move(platform)));
  return product;
}
