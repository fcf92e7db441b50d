#include "workbench/product/ProductName.h"

#include <system_error>

#include "workbench/product/ModelText.h"
#include "workbench/product/XmlTree.h"

namespace fs = std::filesystem;

ProductName ReadProductName(const fs::path& bin, const LocalNames& names) {
  std::error_code error;
  const fs::path file = bin / ".." / "Product.xml";
  const fs::file_type type = fs::status(file, error).type();
  if (type != fs::file_type::regular && type != fs::file_type::not_found) return {};
  const XmlTree product = ParseXmlTree(ReadModelText(names.fromPath(file), names.toPath).text);
  if (product.root.name != "ProductDescription" || !product.root.space.empty()) return {};
  return {TextAt(product.root, "Product"), TextAt(product.root, "Version")};
}
