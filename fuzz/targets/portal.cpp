#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"

void Fuzz(const std::string& input) {
  const std::string file = FuzzFolder::Instance().Write("Portal.xml", input);
  ReadTwice<PortalModel>([&](PortalModel& portal) {
    TevModelParse::CProductXmlReader().ReadServerPotalModel(portal, file);
  });
}
