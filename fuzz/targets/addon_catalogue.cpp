#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"

void Fuzz(const std::string& input) {
  const FuzzFolder& folder = FuzzFolder::Instance();
  folder.Write("ProductAddons.xml", input);
  ReadTwice<std::vector<AddonModel>>([&](std::vector<AddonModel>& addons) {
    TevModelParse::CProductXmlReader().ReadAllAddonsXml(addons, folder.Path(""));
  });
}
