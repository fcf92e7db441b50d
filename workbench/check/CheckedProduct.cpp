#include "workbench/check/CheckedProduct.h"

#include <algorithm>

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

bool CheckedProduct::Exists(const std::string& name) const {
  return std::binary_search(names.begin(), names.end(), name);
}
