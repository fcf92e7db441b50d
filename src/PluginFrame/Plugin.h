#pragma once

#include <string>

#include "sdk/os/os.h"

namespace PluginFrame {

/// One plugin library held open by the frame: loads it, calls its two entries, frees it.
///
/// Made by the manager, one per plugin, and shared by it with the task that runs the plugin. Calls
/// on one object come from one thread at a time; different objects are used on different threads at
/// once. What a plugin throws stops here: it counts as false, as a missing entry or library does,
/// and the log says why.
class CPlugin {
 public:
  CPlugin() = default;
  ~CPlugin();
  CPlugin(const CPlugin&) = delete;
  CPlugin& operator=(const CPlugin&) = delete;

  /// Loads the library at `path` + ".dll", a text in the local code page. When the object holds
  /// that library already it still holds it once afterwards.
  bool Load(const std::string& path);

  /// Calls the library's entry of the same name and returns what it returned.
  bool Init();
  bool UnInit();

  /// The operating system's handle of the library, null unless it is loaded.
  HMODULE Handle() const { return m_module; }

 private:
  using Entry = bool (*)();

  Entry FindEntry(const char* name) const;

  HMODULE m_module = nullptr;
};

}  // namespace PluginFrame
