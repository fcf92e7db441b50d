#include "fuzz/FuzzTarget.h"
#include "src/private/PluginModelReaderImpl.h"

void Fuzz(const std::string& input) {
  const FuzzFolder& folder = FuzzFolder::Instance();
  folder.Write("bin/META_INFO/plugin/plugin.xml", input);
  for (const char* type : {"server", "dam_driver"}) {
    ProductPluginEntry entry;
    entry.ID = "plugin";
    entry.Type = type;
    ReadTwice<ProductModel>([&](ProductModel& model) {
      const bool read = TevModelParse::CPluginXmlReader().ReadPluginXml(
          model.ServerPluginDescriptions, model.ExePluginDescriptions,
          model.DriverPluginDescriptions, folder.Path("bin/"), folder.Path("bin/META_INFO/"),
          {entry});
      Check(read || input.empty(), "only an empty description cannot be read");
      Check(model.ServerPluginDescriptions.size() + model.ExePluginDescriptions.size() +
                    model.DriverPluginDescriptions.size() <=
                1,
            "one description goes to one list at most");
    });
  }
}
