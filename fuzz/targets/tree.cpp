// A whole product, laid out by LayOutProduct. The frame initialises it and passes it to the
// platform.

#include "fuzz/FuzzTarget.h"
#include "fuzz/ProductInput.h"
#include "reference/kpx/PlatformRecord.h"
#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"
#include "src/PluginFrame/PluginManager.h"
#include "src/private/RunningProduct.h"

void Fuzz(const std::string& input) {
  LayOutProduct(input);
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
