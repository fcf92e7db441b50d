// InstalledProducts.xml, beside the descriptions of the sample product's addons and tools, which
// the input may name.

#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"
#include "src/private/RunningProduct.h"

void Fuzz(const std::string& input) {
  g_productName = "NVX";
  g_productVersion = "3.1.0";
  const FuzzFolder& folder = FuzzFolder::Instance();
  static const bool isLaidOut = [&folder] {
    std::filesystem::copy(TEV_SAMPLE_ADDONS, folder.Path("bin/TevAddons"),
                          std::filesystem::copy_options::recursive);
    return true;
  }();
  Check(isLaidOut, "the sample's addons are there");
  folder.Write("bin/TevAddons/InstalledProducts.xml", input);
  const TevModelParse::CProductXmlReader reader;
  const std::string directory = folder.Path("bin/TevAddons/");
  ReadTwice<std::vector<AddonModel>>(
      [&](std::vector<AddonModel>& addons) { reader.ReadInstalledAddonsXml(addons, directory); });
  ReadTwice<std::vector<ToolModel>>(
      [&](std::vector<ToolModel>& tools) { reader.ReadInstalledToolsXml(tools, directory); });
  ReadTwice<ProductModel>(
      [&](ProductModel& model) { reader.ReadClientInfoFromInstalledAddonsXml(model); });
}
