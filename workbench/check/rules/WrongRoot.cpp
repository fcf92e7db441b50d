#include <array>

#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

struct FileOfRoot {
  FileKind kind;
  const char* what;
};

constexpr std::array kFiles = {FileOfRoot{FileKind::kProduct, "Product.xml"},
                               FileOfRoot{FileKind::kDrivers, "DeviceDrivers.xml"},
                               FileOfRoot{FileKind::kPortal, "Portal.xml"},
                               FileOfRoot{FileKind::kPlatform, "Platform.xml"},
                               FileOfRoot{FileKind::kPlugin, "a plugin's description"},
                               FileOfRoot{FileKind::kInstalled, "InstalledProducts.xml"},
                               FileOfRoot{FileKind::kAddonList, "ProductAddons.xml"},
                               FileOfRoot{FileKind::kToolList, "ProductTools.xml"},
                               FileOfRoot{FileKind::kAddon, "an addon's description"},
                               FileOfRoot{FileKind::kTool, "a tool's description"}};

/// "; <Platform> is the root of Platform.xml" when files of another kind have this root.
std::string OtherFile(const std::string& root) {
  for (const FileOfRoot& file : kFiles) {
    if (root == RootName(file.kind)) return "; " + Tag(root) + " is the root of " + file.what;
  }
  return std::string();
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    const XmlNode& root = file.tree.root;
    if (!file.tree.wellFormed || root.name == RootName(file.kind)) continue;
    findings.push_back(MakeFinding(file, root.place,
                                   "the root element is " + Tag(root.name) + ", not " +
                                       Tag(RootName(file.kind)) + ": " + ReadsAsEmpty(file.kind) +
                                       OtherFile(root.name),
                                   "root"));
  }
}

}  // namespace

TEV_RULE(WrongRoot) = {
    "TEV104",
    Severity::kError,
    "A model file has another root element than its kind must have",
    "The frame asks for every element by its whole path, which begins with the root element. In a "
    "file with another root it finds nothing: the file reads as empty, without a message.",
    "<Products> instead of <ProductDescription> in Product.xml",
    "Rename the root element. When it is the root of another kind of file, two files were probably "
    "exchanged, or a tool is listed as an addon.",
    &Check};
