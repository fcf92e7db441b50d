#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"

void Fuzz(const std::string& input) {
  const std::string file = FuzzFolder::Instance().Write("DeviceDrivers.xml", input);
  ReadTwice<ProductModel>([&](ProductModel& model) {
    TevModelParse::CProductXmlReader().ReadDriverModel(model, file);
  });
}
