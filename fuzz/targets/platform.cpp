#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"

void Fuzz(const std::string& input) {
  const std::string file = FuzzFolder::Instance().Write("Platform.xml", input);
  ReadTwice<PlatformModel>([&](PlatformModel& platform) {
    TevModelParse::CProductXmlReader().ReadPlatformModel(platform, file);
  });
}
