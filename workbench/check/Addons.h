#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/RuleFinding.h"

// What several rules need to know of addons and tools.

/// The codes of the products that can run addons, by which <Product> names them, and the names by
/// which an addon's <ProductLogo> does.
constexpr char kLiteCode[] = "NVT";
constexpr char kProfessionalCode[] = "NVX";

/// Below this version, as text, the professional product runs no addon.
constexpr char kFirstAddonVersion[] = "2.6.0";

bool IsProductCode(const std::string& name);

/// The code that belongs to a logo; empty for any other text.
std::string CodeOfLogo(const std::string& logo);

/// The logo that belongs to a code.
std::string LogoOfCode(const std::string& code);

const std::vector<std::string>& KnownLogos();

/// Addons and tools: the frame reads both in nearly the same way.
struct AddonKind {
  const char* what;                  // "addon"
  const char* element;               // that lists one: "Addon"
  const CheckedFile* catalogue;      // ProductAddons.xml
  const CheckedFile* installedFile;  // InstalledProducts.xml
  const std::deque<CatalogueEntry>* offered;
  const std::deque<InstalledEntry>* installed;
};

std::array<AddonKind, 2> AddonKinds(const CheckedProduct& product);

/// Whether the description of an installed addon or tool is read: it has the entry's ID.
bool IsDescribed(const InstalledEntry& entry);

/// The place of the attribute ID of an entry in InstalledProducts.xml, `file`.
Place PlaceOf(const CheckedFile& file, const InstalledEntry& entry);

/// An entry of an addon's <SupportProducts>.
struct SupportedProduct {
  const XmlNode* node = nullptr;
  std::string logo;
};

/// Those of an addon's or tool's description; without what a second section hides.
std::vector<SupportedProduct> SupportedProducts(const CheckedFile& description);

/// The entry by which the frame judges whether the addon runs in the product with this code: the
/// first for it; null for none.
const SupportedProduct* SupportFor(const std::vector<SupportedProduct>& products,
                                   const std::string& code);

/// The entry whose <ProductLogo> names no product, when the addon has none for the running
/// product and is incompatible for that reason; null otherwise.
const SupportedProduct* MisspeltSupport(const CheckedProduct& product, const AddonModel& addon,
                                        const std::vector<SupportedProduct>& products);

/// The installed addons as the frame sees them, by ID; empty when it refuses the product.
std::map<std::string, const AddonModel*> InstalledModels(const CheckedProduct& product);

/// The installed addons that are incompatible.
struct IncompatibleAddons {
  std::vector<std::string> ids;
  std::size_t plugins = 0;  // that they bring
};

IncompatibleAddons FindIncompatible(const CheckedProduct& product);

/// What incompatible addons with so many plugins mean for the product: ", so 2 plugins are not
/// added to the product". Empty for none.
std::string NotAdded(std::size_t plugins);
