#include "host/ProductCheck.h"

#include <future>
#include <optional>
#include <utility>

#include "host/PluginHeads.h"
#include "host/ProductFolder.h"
#include "host/ProductReading.h"
#include "host/UnlessStopped.h"
#include "reference/os/LocalText.h"
#include "reference/xrt/ExecutablePath.h"
#include "sdk/lpc/lpc.h"
#include "workbench/check/PackageReader.h"
#include "workbench/check/PluginLibraryReader.h"
#include "workbench/product/XmlThreads.h"

namespace {

/// The product as it lies on disk, and its libraries.
class ProductFiles {
 public:
  ProductFiles(const ProductPlace& place, std::int32_t runningModule,
               const LibrarySystem* libraries)
      : m_product(ReadCheckedProduct(place, m_names, runningModule)) {
    ReadPackages(*m_product, place, m_names);
    if (libraries == nullptr) return;
    m_libraries.emplace(*m_product, place.folder, m_names, *libraries);
    m_libraries->Read();
  }

  const CheckedProduct& Product() const { return *m_product; }

  void Use(HandedOver handedOver) {
    UseModel(*m_product, std::move(handedOver));
    if (m_libraries) m_libraries->Read();
  }

  std::unique_ptr<CheckedProduct> Take() { return std::move(m_product); }

 private:
  const LocalNames m_names = SystemNames();
  std::unique_ptr<CheckedProduct> m_product;
  std::optional<PluginLibraryReader> m_libraries;
};

}  // namespace

HandedOver HandedOverOf(PlatformRecord platform) {
  return {std::move(*platform.productModel), platform.addons.value_or(std::vector<AddonModel>()),
          platform.tools.value_or(std::vector<ToolModel>())};
}

std::unique_ptr<CheckedProduct> ReadProductWithFrame(const ProductPlace& place,
                                                     std::int32_t runningModule,
                                                     const FrameLibrary& frame,
                                                     const LibrarySystem* libraries) {
  SetExecutablePath(LocalFromPath(place.folder / PathFromLocal(place.bin) / "HUB"));
  PrepareXmlForThreads();
  auto reading = std::async(std::launch::async, [&] {
    return std::make_unique<ProductFiles>(place, runningModule, libraries);
  });
  std::unique_ptr<ProductFiles> files;
  if (MayHoldUpFrame(place, SystemNames())) {
    files = reading.get();
    if (files->Product().HoldsUpFrame()) return files->Take();
  }
  const std::int32_t result = InitialiseFrame(frame);
  if (!files) files = reading.get();
  if (result != 0) return files->Take();
  PlatformRecord platform = SnapshotPlatform();
  // The frame does this only in Frame_Stop, and could not initialise again in this process.
  TevLPCFrameUnInit();
  frame.UnInit();
  if (platform.productModel) files->Use(HandedOverOf(std::move(platform)));
  return files->Take();
}

std::unique_ptr<CheckedProduct> ReadProductIn(const std::string& bin, std::int32_t runningModule,
                                              HostContext& context) {
  const auto place = FindProduct(PathFromLocal(bin), SystemNames());
  if (!place) return nullptr;
  UseProductFolder(bin);
  std::unique_ptr<CheckedProduct> product;
  ReadUnlessStopped(context, [&] {
    const FrameLibrary frame(FrameLibrary::PathBesideProgram());
    product = ReadProductWithFrame(*place, runningModule, frame, nullptr);
  });
  return product;
}
