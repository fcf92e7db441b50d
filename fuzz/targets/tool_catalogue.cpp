#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"

void Fuzz(const std::string& input) {
  const FuzzFolder& folder = FuzzFolder::Instance();
  folder.Write("ProductTools.xml", input);
  ReadTwice<std::vector<ToolModel>>([&](std::vector<ToolModel>& tools) {
    TevModelParse::CProductXmlReader().ReadAllToolsXml(tools, folder.Path(""));
  });
}
