#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// One executable plugin, as the local-procedure-call framework starts it.
struct ExecutableInfo {
  std::string ID;
  std::string Name;
  std::string Path;  // full path of the executable
  std::string Version;
  std::string PlatformVersion;  // of the platform that it depends on; empty for none
  std::vector<std::string> GroupNames;
  std::int32_t Number = 0;
  bool Flag = false;
};

/// What the local-procedure-call framework is given of the product.
struct PlatformInfo {
  std::int32_t Mode = 2;
  std::string Edition = "OverseaNeutral";
  std::string PlatformExePath;                        // full path of the platform's own executable
  std::map<std::string, ExecutableInfo> Executables;  // by ID
};

/// Brings the framework up under `name`. Returns 0 on success. The host's thread.
std::int32_t TevLPCFrameInit(const std::string& name, const PlatformInfo& info);

/// Notifies the framework that the plugins have started. Any thread.
void TevLPCFrameNotifyStartPlugins(const std::string& text);

/// Takes the framework down. Returns 0 on success. The host's thread.
std::int32_t TevLPCFrameUnInit();
