// The description of an installed tool, read for a tool with the ID that the input contains.

#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"

void Fuzz(const std::string& input) {
  const std::string file = FuzzFolder::Instance().Write("description.xml", input);
  TevModelParse::CXmlProto document;
  document.ParseMemory(input);
  const std::string id = document.GetNodeText("/ToolDescription/ID", "");
  ReadTwice<ToolModel>([&](ToolModel& tool) {
    tool.ID = id;
    TevModelParse::CProductXmlReader().ReadSingleInstalledToolModel(tool, file);
    Check(tool.ID == id, "a tool keeps its ID");
  });
}
