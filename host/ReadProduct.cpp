#include "host/ReadProduct.h"

#include "host/FrameLibrary.h"
#include "host/PluginHeads.h"
#include "host/ProductCheck.h"
#include "host/ProductFolder.h"
#include "host/UnlessStopped.h"
#include "reference/os/LocalText.h"

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
