#include "workbench/check/Addons.h"

#include <algorithm>
#include <set>

#include "workbench/check/Words.h"

namespace {

constexpr char kLiteLogo[] = "Velmora Lite";
constexpr char kProfessionalLogo[] = "Velmora Professional";

}  // namespace

bool IsProductCode(const std::string& name) {
  return name == kLiteCode || name == kProfessionalCode;
}

std::string CodeOfLogo(const std::string& logo) {
  if (logo == kLiteLogo) return kLiteCode;
  return logo == kProfessionalLogo ? kProfessionalCode : std::string();
}

std::string LogoOfCode(const std::string& code) {
  if (code == kLiteCode) return kLiteLogo;
  return code == kProfessionalCode ? kProfessionalLogo : std::string();
}

const std::vector<std::string>& KnownLogos() {
  static const std::vector<std::string> logos = {kLiteLogo, kProfessionalLogo};
  return logos;
}

std::array<AddonKind, 2> AddonKinds(const CheckedProduct& product) {
  const CheckedFile& installed = product.File(FileKind::kInstalled);
  return {{{"addon", "Addon", &product.File(FileKind::kAddonList), &installed,
            &product.offeredAddons, &product.addons},
           {"tool", "Tool", &product.File(FileKind::kToolList), &installed, &product.offeredTools,
            &product.tools}}};
}

bool IsDescribed(const InstalledEntry& entry) {
  return entry.node != nullptr && entry.file->HasContent() &&
         TextAt(entry.file->tree.root, "ID") == entry.id;
}

Place PlaceOf(const CheckedFile& file, const InstalledEntry& entry) {
  return entry.node == nullptr ? PlaceOf(file, *entry.section) : PlaceOf(file, *entry.node, "ID");
}

std::vector<SupportedProduct> SupportedProducts(const CheckedFile& description) {
  std::vector<SupportedProduct> products;
  if (!description.HasContent()) return products;
  for (const ListEntry& listed : SelectList(description.tree.root, "SupportProducts/Product")) {
    if (listed.node == nullptr) continue;
    products.push_back({listed.node, TextAt(*listed.node, "ProductLogo")});
  }
  return products;
}

const SupportedProduct* SupportFor(const std::vector<SupportedProduct>& products,
                                   const std::string& code) {
  const auto found = std::find_if(
      products.begin(), products.end(),
      [&](const SupportedProduct& one) { return !code.empty() && CodeOfLogo(one.logo) == code; });
  return found == products.end() ? nullptr : &*found;
}

const SupportedProduct* MisspeltSupport(const CheckedProduct& product, const AddonModel& addon,
                                        const std::vector<SupportedProduct>& products) {
  if (addon.InstalledCompatible) return nullptr;
  if (SupportFor(products, product.model.Product) != nullptr) return nullptr;
  const auto found =
      std::find_if(products.begin(), products.end(),
                   [](const SupportedProduct& one) { return CodeOfLogo(one.logo).empty(); });
  return found == products.end() ? nullptr : &*found;
}

std::map<std::string, const AddonModel*> InstalledModels(const CheckedProduct& product) {
  std::map<std::string, const AddonModel*> models;
  for (const AddonModel& addon : product.addonModels) {
    if (addon.Installed && !addon.ID.empty()) models.emplace(addon.ID, &addon);
  }
  return models;
}

IncompatibleAddons FindIncompatible(const CheckedProduct& product) {
  IncompatibleAddons incompatible;
  const auto models = InstalledModels(product);
  std::set<std::string> seen;
  for (const InstalledEntry& entry : product.addons) {
    const auto model = models.find(entry.id);
    if (model == models.end() || model->second->InstalledCompatible) continue;
    if (!seen.insert(entry.id).second) continue;
    incompatible.ids.push_back(entry.id);
    incompatible.plugins += entry.plugins.size();
  }
  return incompatible;
}

std::string NotAdded(std::size_t plugins) {
  if (plugins == 0) return std::string();
  return ", so " + Counted(plugins, "plugin") + (plugins == 1 ? " is" : " are") +
         " not added to the product";
}
