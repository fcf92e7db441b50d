#include "fuzz/FuzzTarget.h"
#include "src/private/ProductModelReaderImpl.h"

void Fuzz(const std::string& input) {
  const std::string file = FuzzFolder::Instance().Write("Product.xml", input);
  ReadTwice<ProductModel>([&](ProductModel& model) {
    TevModelParse::CProductXmlReader().ReadBaseProductXml(model, file);
  });
}
