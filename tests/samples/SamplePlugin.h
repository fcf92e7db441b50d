#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "reference/base/Log.h"
#include "samples/board/Board.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"

/// A plugin of the sample product, by its ID: loaded and initialised as the frame would, stopped
/// and unloaded by the destructor. One at a time.
class SamplePlugin {
 public:
  explicit SamplePlugin(const std::string& id)
      : m_library(LoadLibraryW(LocalToWide(TEV_SITE "/bin/" + id + ".dll").c_str())) {
    ConfigureLog({0, ""});
    SetLogObserver([this](int level, const std::string& module, const std::string& text) {
      m_logged.push_back(std::to_string(level) + " [" + module + "] " + text);
    });
    EXPECT_TRUE(Call("Init"));
  }
  ~SamplePlugin() {
    EXPECT_TRUE(Call("UnInit"));
    SetLogObserver({});
    EXPECT_NE(0, FreeLibrary(m_library));
  }
  SamplePlugin(const SamplePlugin&) = delete;
  SamplePlugin& operator=(const SamplePlugin&) = delete;

  /// The lines since it was loaded, as "LEVEL [MODULE] TEXT".
  const std::vector<std::string>& Logged() const { return m_logged; }

 private:
  bool Call(const char* entry) {
    return reinterpret_cast<bool (*)()>(GetProcAddress(m_library, entry))();
  }

  HMODULE m_library;
  std::vector<std::string> m_logged;
};
