// An installed tool's own description, for a tool of whatever ID it carries.

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
