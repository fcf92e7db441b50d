#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "src/model/AddonModel.h"
#include "src/model/ProductModel.h"

/// Plugin name to the operating system's handle of its library.
using StartedPluginMap = std::map<std::string, void*>;

/// Called once by the platform, on a thread of its own, when its start is done; fills the map.
///
/// The frame starts its plugins within this call and holds its lifecycle lock meanwhile, also while
/// it calls the platform, the local-procedure-call framework and the base library. Frame_Stop takes
/// that lock, which is not recursive: none of these calls may call Frame_Stop, or wait for a thread
/// that does. To have the product stopped, they ask the host and return.
using KPXStartFinishFn = bool (*)(StartedPluginMap* started);

// Called in this order, on the host's thread. Refused, with a result other than 0 and a reason for
// KPX_GetLastError: KPX_Init when the platform is up, KPX_Start when it is not up or is started,
// KPX_Stop when it is not started, KPX_UnInit when it is not up.

/// Initialises the platform. Returns 0 on success.
std::int32_t KPX_Init();

/// Starts the platform and calls `finished` once it has started, possibly after this has returned.
/// Does not wait for `finished` to return: the host could not stop a start that never ends.
/// Returns 0 on success; a null `finished` is refused.
std::int32_t KPX_Start(KPXStartFinishFn finished);

/// Prepares the platform for the stop of the plugins. Returns 0 on success.
std::int32_t KPX_PreUnInit();

/// Stops the platform. The start callback does not run any more when this returns.
/// Returns 0 on success.
std::int32_t KPX_Stop();

/// Undoes KPX_Init. Returns 0 on success.
std::int32_t KPX_UnInit();

// May be called at any time, on any thread, from any language.

extern "C" {

/// Copies the text of the platform's last error into `text` of `size` bytes, zero-terminated and
/// cut to fit; a null `text` or a `size` of 0 copies nothing. Returns the error's code, 0 for none.
std::int32_t KPX_GetLastError(char* text, std::int32_t size);

/// Copies the platform's version text the same way. Returns its full length without the zero.
std::int32_t KPX_GetVersion(char* text, std::int32_t size);

}  // extern "C"

// The hand-over of the model, on the host's thread during Frame_Init.

/// Takes the addons and tools that the product offers or has installed.
void KPX_SetAddonAndToolModel(const std::vector<AddonModel>& addons,
                              const std::vector<ToolModel>& tools);

/// Fills `installed` with the installed addons that passed the platform's own checks.
void KPX_GetInstalledAddonModel(std::vector<AddonModel>& installed);

/// The number of the module that this process runs; 2 is the distributed module.
std::int32_t KPX_GetRunningModule();

/// Takes the whole product model. Returns non-zero on success.
std::int32_t KPX_SetProductModel(const ProductModel& model);

/// The platform's record of one plugin.
class CPluginInfo {
 public:
  void SetVal_plugin_id(const std::string& value) { m_plugin_id = value; }
  void SetVal_plugin_name(const std::string& value) { m_plugin_name = value; }
  void SetVal_source(const std::string& value) { m_source = value; }
  void SetVal_version(const std::string& value) { m_version = value; }
  void SetVal_type(std::int32_t value) { m_type = value; }
  void SetVal_is_load(bool value) { m_is_load = value; }

  const std::string& plugin_id() const { return m_plugin_id; }
  const std::string& plugin_name() const { return m_plugin_name; }
  const std::string& source() const { return m_source; }
  const std::string& version() const { return m_version; }
  std::int32_t type() const { return m_type; }
  bool is_load() const { return m_is_load; }

 private:
  std::string m_plugin_id;
  std::string m_plugin_name;
  std::string m_source;
  std::string m_version;
  std::int32_t m_type = 0;
  bool m_is_load = false;
};

/// Plugin ID to the plugin's record.
using PluginInfoMap = std::map<std::string, std::shared_ptr<CPluginInfo>>;

/// Registers the product's plugins.
void AddPluginsInfo(const PluginInfoMap& plugins);

// Called during the start, on any thread.

/// Takes the names of the plugins whose Init succeeded, each with true.
void UpdatePluginsLoadState(const std::map<std::string, bool>& started);

/// Adds a line to the start-up timing table; -1 milliseconds mark a line that is no timing.
void pluginTakeTimeCountPrint(const std::string& text, std::int32_t milliseconds);
