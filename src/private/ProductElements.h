#pragma once

#include "src/model/ProductModel.h"
#include "src/private/XmlElement.h"

// Product.xml, DeviceDrivers.xml and Platform.xml, from elements to records.

namespace TevModelParse {

/// `ProductPluginEntry::Type` of a server plugin.
inline constexpr char kServerEntry[] = "server";

/// Reads the texts of `root`, and appends its languages.
void ReadProductFields(ProductModel& model, const XmlElement& root);

ProductPluginEntry ReadServerPlugin(const XmlElement& element);
ProductPluginEntry ReadDriver(const XmlElement& element);
SubPlatformEntry ReadSubPlatform(const XmlElement& element);

void ReadPlatformFields(PlatformModel& platform, const XmlElement& root);

}  // namespace TevModelParse
