#pragma once

#include <cstdint>
#include <string>

#include "sdk/os/os.h"

/// The frame's library, loaded by path, with its entries looked up by name, as a site's host does.
///
/// Not thread-safe. Unless Unload is called the library stays loaded until the process ends: a
/// plugin that has not returned still needs the frame's code that called it.
class FrameLibrary {
 public:
  /// Loads the library at `path`. Throws std::runtime_error, with a sentence that names the library
  /// and what is wrong with it, when it cannot be loaded or lacks an entry.
  explicit FrameLibrary(const std::string& path);

  std::int32_t Init() const { return m_init(); }
  std::int32_t Start() const { return m_start(); }
  void Stop() const { m_stop(); }
  void UnInit() const { m_uninit(); }

  /// Frees the library. Only after UnInit, when no plugin was started; no entry may be called then.
  void Unload();

  /// The path of the frame's library in the folder of this program.
  static std::string PathBesideProgram();

 private:
  HMODULE m_library = nullptr;
  std::int32_t (*m_init)() = nullptr;
  std::int32_t (*m_start)() = nullptr;
  void (*m_stop)() = nullptr;
  void (*m_uninit)() = nullptr;
};
