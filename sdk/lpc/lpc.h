#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// One executable plugin that the local-procedure-call framework starts.
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

/// The product, as the local-procedure-call framework receives it.
struct PlatformInfo {
  std::int32_t Mode = 2;
  std::string Edition = "OverseaNeutral";
  std::string PlatformExePath;                        // full path of the platform's own executable
  std::map<std::string, ExecutableInfo> Executables;  // by ID
};

/// Initialises the framework under `name`. Returns 0 on success, another number when it is
/// initialised already. Called on the host's thread.
std::int32_t TevLPCFrameInit(const std::string& name, const PlatformInfo& info);

/// Notifies the framework that the plugins have started. Any thread.
void TevLPCFrameNotifyStartPlugins(const std::string& text);

/// Uninitialises the framework. Returns 0 on success, another number when it is not initialised:
/// the frame then leaves the plugins running. Called on the host's thread.
std::int32_t TevLPCFrameUnInit();
