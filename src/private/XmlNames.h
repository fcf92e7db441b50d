#pragma once

// The names of elements and attributes that are read in more than one place.

namespace TevModelParse::XmlName {

inline constexpr char kCategory[] = "Category";
inline constexpr char kID[] = "ID";
inline constexpr char kIcon[] = "Icon";
inline constexpr char kIsDistributed[] = "IsDistributed";
inline constexpr char kMenuItem[] = "MenuItem";
inline constexpr char kName[] = "Name";
inline constexpr char kNameKey[] = "NameKey";
inline constexpr char kPath[] = "Path";
inline constexpr char kPlatform[] = "Platform";
inline constexpr char kPlugin[] = "Plugin";
inline constexpr char kPlugins[] = "Plugins";
inline constexpr char kProduct[] = "Product";
inline constexpr char kProductLogo[] = "ProductLogo";
inline constexpr char kType[] = "Type";
inline constexpr char kVersion[] = "Version";

}  // namespace TevModelParse::XmlName
