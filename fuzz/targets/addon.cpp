// The description of an installed addon, read for an addon with the ID that the input contains.

#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"
#include "src/private/RunningProduct.h"

void Fuzz(const std::string& input) {
  g_productName = "NVX";
  g_productVersion = "3.1.0";
  const std::string file = FuzzFolder::Instance().Write("description.xml", input);
  TevModelParse::CXmlProto document;
  document.ParseMemory(input);
  const std::string id = document.GetNodeText("/AddonDescription/ID", "");
  ReadTwice<AddonModel>([&](AddonModel& addon) {
    addon.ID = id;
    TevModelParse::CProductXmlReader().ReadSingleInstalledAddonModel(addon, file);
    Check(addon.ID == id, "an addon keeps its ID");
  });
}
