#pragma once

#include <string>

#include "sdk/os/os.h"

namespace PluginFrame {

/// One plugin library held open by the frame: loads it, calls its two entries, frees it.
///
/// The manager makes one per plugin and shares it with the plugin's task. Calls on one object come
/// from one thread at a time; different objects are used on different threads at once. A missing
/// library or entry, and an exception that a plugin throws, is false and a log line with the
/// reason.
class CPlugin {
 public:
  CPlugin() = default;
  ~CPlugin();
  CPlugin(const CPlugin&) = delete;
  CPlugin& operator=(const CPlugin&) = delete;

  /// Loads the library at `path` + ".dll", a text in the local code page. A library that the object
  /// has loaded before is held once, not twice.
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
