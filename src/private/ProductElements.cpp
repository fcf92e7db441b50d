#include "src/private/ProductElements.h"

#include <string>
#include <utility>

#include "src/private/DottedText.h"
#include "src/private/XmlNames.h"

namespace TevModelParse {

using namespace XmlName;

namespace {

constexpr char kTrue[] = "true";

ProductPluginEntry ReadEntry(const XmlElement& element) {
  ProductPluginEntry entry;
  entry.ID = element.Attribute(kID);
  entry.Version = element.Attribute(kVersion);
  entry.GroupName = GroupNameOf(entry.ID);
  return entry;
}

LanguageEntry ReadLanguage(const XmlElement& element) {
  LanguageEntry language;
  language.ID = element.Attribute(kID);
  language.Flag = language.ID == kTrue;  // of the ID, not of another attribute, on purpose
  return language;
}

}  // namespace

void ReadProductFields(ProductModel& model, const XmlElement& root) {
  model.Product = root.Text(kProduct);
  model.ProductLogo = root.Text(kProductLogo);
  model.Version = root.Text(kVersion);
  model.EditionConfig = root.Text("EditionConfig");
  model.FnoodPath = root.Text("FnoodPath");
  const XmlElement platform = root.Child(kPlatform);
  model.PlatformID = platform.Attribute(kID);
  model.PlatformVersion = platform.Attribute(kVersion);
  for (const XmlElement& element : root.Child("Languages").Children("Language")) {
    model.Languages.push_back(ReadLanguage(element));
  }
}

ProductPluginEntry ReadServerPlugin(const XmlElement& element) {
  ProductPluginEntry entry = ReadEntry(element);
  entry.Lazystart = element.Attribute("Lazystart") == kTrue;
  entry.Type = kServerEntry;
  return entry;
}

ProductPluginEntry ReadDriver(const XmlElement& element) {
  ProductPluginEntry entry = ReadEntry(element);
  entry.Type = "dam_driver";
  return entry;
}

SubPlatformEntry ReadSubPlatform(const XmlElement& element) {
  SubPlatformEntry entry;
  entry.ID = element.Attribute(kID);
  entry.Version = element.Attribute(kVersion);
  return entry;
}

void ReadPlatformFields(PlatformModel& platform, const XmlElement& root) {
  platform.Version = root.Text(kVersion);
  platform.PlatformDBType = root.Text("PlatformDBType");
  platform.OneChannelForOneCamera = root.Text("OneChannelForOneCamera");
}

}  // namespace TevModelParse
