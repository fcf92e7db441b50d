#include "workbench/product/ProductName.h"

#include <system_error>

#include "workbench/product/ModelText.h"
#include "workbench/product/XmlFile.h"

namespace fs = std::filesystem;

ProductName ReadProductName(const fs::path& bin, const LocalNames& names) {
  std::error_code error;
  const fs::path file = bin / ".." / "Product.xml";
  const fs::file_type type = fs::status(file, error).type();
  if (type != fs::file_type::regular && type != fs::file_type::not_found) return {};
  const XmlFile product(ReadModelText(names.fromPath(file), names.toPath).text);
  return {product.Text("/ProductDescription/Product", ""),
          product.Text("/ProductDescription/Version", "")};
}
