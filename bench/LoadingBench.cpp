// How long it takes to load, start, stop and free one plugin library: by the frame, by the
// operating-system layer alone, and by the system's loader alone.

#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <filesystem>
#include <string>
#include <vector>

#include "bench/ProductGenerator.h"
#include "reference/base/Log.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "src/PluginFrame/Plugin.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLibraries = 200;

using Entry = bool (*)();

/// The libraries' paths without their extension. They are copies of one library, which the loader
/// treats as different libraries; used in turn, so that no load finds its library still mapped.
const std::vector<std::string>& Libraries() {
  static const std::vector<std::string> paths = [] {
    ConfigureLog({0, "", 0, 0});
    const fs::path data = TEV_BENCH_DATA;
    std::vector<GeneratedPlugin> plugins(kLibraries);
    std::vector<std::string> made;
    for (std::size_t i = 0; i < kLibraries; ++i) {
      plugins[i].id = GeneratedID(i);
      plugins[i].library = data / "libraries" / "takes_0.dll";
      made.push_back((data / "loading" / "bin" / plugins[i].id).string());
    }
    WriteProduct(data / "loading", plugins, 0);
    return made;
  }();
  return paths;
}

template <typename Work>
void ForEachLibrary(benchmark::State& state, Work work) {
  const std::vector<std::string>& libraries = Libraries();
  std::size_t next = 0;
  for (auto _ : state) {
    if (!work(libraries[next])) {
      state.SkipWithError("a library did not load, start or stop");
      break;
    }
    next = (next + 1) % libraries.size();
  }
}

void Frame(benchmark::State& state) {
  ForEachLibrary(state, [](const std::string& path) {
    PluginFrame::CPlugin plugin;
    return plugin.Load(path) && plugin.Init() && plugin.UnInit();
  });
}

void Layer(benchmark::State& state) {
  ForEachLibrary(state, [](const std::string& path) {
    const HMODULE library = LoadLibraryW(LocalToWide(path + ".dll").c_str());
    if (library == nullptr) return false;
    const auto init = reinterpret_cast<Entry>(GetProcAddress(library, "Init"));
    const bool started = init();
    const auto uninit = reinterpret_cast<Entry>(GetProcAddress(library, "UnInit"));
    const bool stopped = uninit();
    return FreeLibrary(library) != 0 && started && stopped;
  });
}

void Loader(benchmark::State& state) {
  ForEachLibrary(state, [](const std::string& path) {
    void* library = dlopen((path + ".dll").c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return false;
    const auto init = reinterpret_cast<Entry>(dlsym(library, "Init"));
    const bool started = init();
    const auto uninit = reinterpret_cast<Entry>(dlsym(library, "UnInit"));
    const bool stopped = uninit();
    return dlclose(library) == 0 && started && stopped;
  });
}

BENCHMARK(Frame)->Unit(benchmark::kMicrosecond);
BENCHMARK(Layer)->Unit(benchmark::kMicrosecond);
BENCHMARK(Loader)->Unit(benchmark::kMicrosecond);

}  // namespace
