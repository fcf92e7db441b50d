#include "src/private/AddonCompatibility.h"

namespace TevModelParse {

namespace {

constexpr char kLiteCode[] = "NVT";
constexpr char kProfessionalCode[] = "NVX";

// The versions of the professional product at which compatibility changes: an addon for a version
// before one of them is not compatible with a product from it on, and the other way round.
constexpr char kFirstVersion[] = "2.6.0";
constexpr char kSecondVersion[] = "3.0.0";

Compatibility CompatibleIf(bool condition) {
  return condition ? Compatibility::kCompatible : Compatibility::kIncompatible;
}

Compatibility JudgeForProfessional(const std::string& product, const std::string& min) {
  if (product == kFirstVersion) return CompatibleIf(min == product);
  if (product < kFirstVersion) return Compatibility::kProductTooOld;
  const char* bound = product < kSecondVersion ? kFirstVersion : kSecondVersion;
  return CompatibleIf(product >= min && min >= bound);
}

}  // namespace

Compatibility JudgeCompatibility(const std::string& productName, const std::string& productVersion,
                                 const std::string& minVersion) {
  if (productName == kProfessionalCode) return JudgeForProfessional(productVersion, minVersion);
  if (productName != kLiteCode) return Compatibility::kIncompatible;
  return productVersion < minVersion ? Compatibility::kProductTooOld : Compatibility::kCompatible;
}

std::string ProductCodeOfLogo(const std::string& logo) {
  if (logo == "Velmora Lite") return kLiteCode;
  if (logo == "Velmora Professional") return kProfessionalCode;
  return std::string();
}

}  // namespace TevModelParse
