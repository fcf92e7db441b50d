#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "tests/contract/Subject.h"

/// The loader, used as the frame uses it.
class LoaderTest : public testing::Test {
 protected:
  using Entry = bool (*)();

  static HMODULE Load(const std::string& path) { return LoadLibraryW(LocalToWide(path).c_str()); }

  static Entry Find(HMODULE library, const char* name) {
    // Cast through void(*)(): FARPROC has another signature.
    return reinterpret_cast<Entry>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
  }

  /// The code with which the library at `path` is refused; 0 when it is not.
  static DWORD Refusal(const std::string& path) {
    const HMODULE library = Load(path);
    if (library == nullptr) return GetLastError();
    FreeLibrary(library);
    return 0;
  }

  std::unique_ptr<Subject> subject = Subject::Make();
};
