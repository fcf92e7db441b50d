#include "src/private/PluginElements.h"

#include <cstdlib>
#include <string>

#include "src/private/XmlNames.h"

namespace TevModelParse {

using namespace XmlName;

namespace {

constexpr char kPlatformCategory[] = "platform";
constexpr char kNoPermission[] = "-1";

PluginDependency ReadDependency(const XmlElement& element) {
  PluginDependency dependency;
  dependency.ID = element.Attribute(kID);
  dependency.Version = element.Attribute(kVersion);
  return dependency;
}

}  // namespace

void ReadPluginFields(PluginDescription& description, const XmlElement& root) {
  description.Type = root.Int(kType, -1);
  description.ID = root.Text(kID);
  description.Name = root.Text(kName);
  description.Version = root.Text(kVersion);
  description.IsDistributed = root.Flag(kIsDistributed);
}

PluginDependency ReadPluginDependency(const XmlElement& element) {
  PluginDependency dependency = ReadDependency(element);
  const std::string dependentType = element.Attribute("DependentType");
  if (!dependentType.empty()) dependency.DependentType = std::atoi(dependentType.c_str());
  return dependency;
}

PluginDependency ReadPlatformDependency(const XmlElement& element) {
  PluginDependency dependency = ReadDependency(element);
  const bool isPlatform = element.Attribute(kCategory, kPlatformCategory) == kPlatformCategory;
  dependency.Category = isPlatform ? DependencyCategory::kPlatform : DependencyCategory::kOther;
  return dependency;
}

PluginMenuItem ReadPluginMenuItem(const XmlElement& element) {
  PluginMenuItem item;
  item.ID = element.Text(kID);
  item.MenuType = element.Int("MenuType", -1);
  item.Level = element.Int("Level", -1);
  item.SubMenuType = element.Int("SubMenuType", -1);
  item.NameKey = element.Text(kNameKey);
  item.TipsKey = element.Text("TipsKey");
  item.DescriptionKey = element.Text("DescriptionKey");
  item.TabNameKey = element.Text("TabNameKey");
  item.Color = element.Text("Color");
  item.SelColor = element.Text("SelColor");
  item.Icon = element.Text(kIcon);
  item.SelIcon = element.Text("SelIcon");
  item.TabIcon = element.Text("TabIcon");
  item.TabSelIcon = element.Text("TabSelIcon");
  item.OpenType = element.Int("OpenType", -1);
  item.Layout = element.Text("Layout");
  item.Url = element.Text("Url");
  item.ShowType = element.Int("ShowType", -1);
  item.MenuState = element.Int("MenuState", -1);
  item.ResourcePermissionID = element.Text("ResourcePermissionID", kNoPermission);
  item.ConfiguredPermissionID = element.Text("ConfiguredPermissionID", kNoPermission);
  item.ControlPermissionID = element.Text("ControlPermissionID", kNoPermission);
  item.ControlItemID = element.Text("ControlItemID", kNoPermission);
  return item;
}

}  // namespace TevModelParse
