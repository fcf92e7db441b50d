#pragma once

#include <string>

// Where the model files lie, from the executable's directory.

namespace TevModelParse {

inline constexpr char kProductFolder[] = "../";
inline constexpr char kMetaFolder[] = "META_INFO/";
inline constexpr char kInstallFolder[] = "TevAddons/";

/// The description of the plugin, addon or tool `id`, which has a folder of its own in `folder`.
inline std::string DescriptionPath(const std::string& folder, const std::string& id) {
  return folder + id + "/" + id + ".xml";
}

}  // namespace TevModelParse
