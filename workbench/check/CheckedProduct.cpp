#include "workbench/check/CheckedProduct.h"

#include <algorithm>
#include <numeric>

const char* RootName(FileKind kind) {
  switch (kind) {
    case FileKind::kProduct:
      return "ProductDescription";
    case FileKind::kDrivers:
      return "DAMDrivers";
    case FileKind::kPortal:
      return "PortalDescription";
    case FileKind::kPlatform:
      return "Platform";
    case FileKind::kPlugin:
      return "Plugin";
    case FileKind::kInstalled:
      return "InstalledProductsDescription";
    case FileKind::kAddonList:
      return "AddonList";
    case FileKind::kToolList:
      return "ToolList";
    case FileKind::kAddon:
      return "AddonDescription";
    case FileKind::kTool:
      return "ToolDescription";
  }
  return "";
}

namespace {

std::size_t Count(const XmlNode& node) {
  return std::accumulate(node.children.begin(), node.children.end(), std::size_t{1},
                         [](std::size_t sum, const XmlNode& child) { return sum + Count(child); });
}

}  // namespace

std::size_t CheckedFile::ElementCount() const {
  return HasContent() ? Count(tree.root) : 0;
}

const CheckedFile& CheckedProduct::File(FileKind kind) const {
  return *std::find_if(files.begin(), files.end(),
                       [&](const CheckedFile& file) { return file.kind == kind; });
}

bool CheckedProduct::Starts(const std::string& id) const {
  return graph.dependsOn.count(id) != 0;
}

const Description* CheckedProduct::Kept(const std::string& id) const {
  const auto found = kept.find(id);
  return found == kept.end() ? nullptr : found->second;
}

bool CheckedProduct::Merges(const InstalledEntry& addon) const {
  return mergedAddons.count(addon.id) != 0;
}

bool CheckedProduct::HoldsUpFrame() const {
  return std::any_of(files.begin(), files.end(), [](const CheckedFile& file) {
    return file.isPipe || file.ElementCount() > kMostElementsForFrame;
  });
}

bool CheckedProduct::Exists(const std::string& name) const {
  return std::binary_search(names.begin(), names.end(), name);
}
