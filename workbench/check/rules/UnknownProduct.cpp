#include <string>

#include "workbench/check/Addons.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

/// Which product is probably meant; empty when nothing says so.
std::string Suggestion(const CheckedFile& file, const std::string& name) {
  std::string code = CodeOfLogo(name);
  if (code.empty()) code = CodeOfLogo(TextAt(file.tree.root, "ProductLogo"));
  if (!code.empty()) return "; did you mean " + Quoted(code) + "?";
  return DidYouMean(name, {kProfessionalCode, kLiteCode});
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kProduct);
  const std::string& name = product.model.Product;
  if (!file.HasContent() || IsProductCode(name)) return;
  const IncompatibleAddons addons = FindIncompatible(product);
  if (addons.ids.empty()) return;
  RuleFinding finding;
  finding.place = PlaceAt(file, "Product");
  finding.message =
      (name.empty() ? "<Product> is missing or empty" : "<Product> is " + Quoted(name)) +
      R"(; only the products "NVX" and "NVT" run addons: every installed addon ()" +
      QuotedList(addons.ids) + ") is incompatible" + NotAdded(addons.plugins) +
      Suggestion(file, name);
  finding.subject = "Product";
  findings.push_back(std::move(finding));
}

}  // namespace

TEV_RULE(UnknownProduct) = {
    "TEV501",
    Severity::kError,
    "The product has a name with which no addon is compatible",
    "The frame decides by the text of <Product> in Product.xml whether an installed addon may run. "
    "It knows two products, NVX and NVT, in exactly these letters; with any other name every addon "
    "is incompatible, and its plugins and services are not added to the product. The rule reports "
    "this only when addons are installed.",
    "<Product>nvx</Product>",
    "Write NVX or NVT. The name for people belongs into <ProductLogo>.",
    &Check};
