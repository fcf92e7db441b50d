// Random libraries: what the check says of them is what the system's loader then does.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "host/PluginHeads.h"
#include "host/SystemLibraries.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/workbench/product/ComposedLibrary.h"
#include "workbench/check/CheckedProduct.h"
#include "workbench/check/PluginLibrary.h"
#include "workbench/check/PluginLibraryReader.h"

namespace fs = std::filesystem;

namespace {

/// A random product of some plugins and libraries that they need, in two folders.
class RandomLibraries {
 public:
  RandomLibraries(unsigned seed, const fs::path& folder) : m_random(seed), m_folder(folder) {
    fs::create_directories(folder / "bin");
    fs::create_directories(folder / "lib");
    for (int i = 0; i < 4; ++i) {
      if (One(5)) continue;  // it does not exist
      Write((One(2) ? "bin/" : "lib/") + Library(i), Function(i));
    }
    for (int i = 0; i < 3; ++i) {
      m_ids.push_back("p" + std::to_string(i));
      Write("bin/" + m_ids.back() + ".dll", "Init");
    }
  }

  const std::vector<std::string>& IDs() const { return m_ids; }
  const std::string& Text() const { return m_text; }

 private:
  bool One(unsigned of) { return m_random() % of == 0; }
  static std::string Library(int i) { return "libtevrandom" + std::to_string(i) + ".so"; }
  static std::string Function(int i) { return "TevRandom" + std::to_string(i); }

  void Write(const std::string& name, const std::string& exported) {
    LibraryParts parts;
    parts.exported = {exported};
    if (One(2)) parts.needed.emplace_back("libc.so.6");
    for (int i = 0; i < 4; ++i) {
      if (One(3)) parts.needed.push_back(Library(i));
      if (One(6)) parts.used.push_back(Function(i));
    }
    if (One(10)) parts.needed.emplace_back("p0.dll");
    if (One(3)) parts.used.emplace_back("printf");
    if (One(2)) parts.version = "V_" + std::to_string(m_random() % 2);
    if (!parts.needed.empty() && One(4)) {
      parts.required = {{parts.needed.back(), One(5) ? "GLIBC_2.2.5" : "V_1"}};
    }
    const std::vector<std::string> paths = {"", "$ORIGIN", "/absent:${ORIGIN}/../lib",
                                            "$ORIGIN/../bin:$ORIGIN/../lib"};
    parts.runpath = One(4) ? "" : paths[m_random() % paths.size()];
    if (One(2)) parts.rpath = paths[m_random() % paths.size()];
    std::string bytes = ElfLibrary(parts);
    const auto damage = m_random() % 30;
    if (damage == 0) bytes[18] = '\267';  // for another machine
    if (damage == 1) bytes.resize(0);
    m_text += name + ": needs";
    for (const std::string& needed : parts.needed) m_text += " " + needed;
    m_text += "; uses";
    for (const std::string& used : parts.used) m_text += " " + used;
    m_text += "; version " + parts.version;
    for (const auto& [library, version] : parts.required) {
      m_text += "; requires " + library + ":" + version;
    }
    m_text += "; rpath " + parts.rpath + "; runpath " + parts.runpath + "; damage " +
              std::to_string(damage) + "\n";
    const std::string path = (m_folder / name).string();
    std::ofstream(path, std::ios::binary) << bytes;
  }

  std::mt19937 m_random;
  fs::path m_folder;
  std::vector<std::string> m_ids;
  std::string m_text;
};

bool IsSaidToLoad(const PluginLibrary& library) {
  return library.state == PluginLibrary::State::kGood && library.notFound.empty() &&
         library.missing.empty();
}

std::string LoaderMessage(const fs::path& library) {
  void* loaded = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the message is stored for each thread
  if (loaded == nullptr) return dlerror();
  dlclose(loaded);
  return std::string();
}

TEST(LoaderVerdict, IsWhatTheLoaderDoes) {
  int loaded = 0;
  int refused = 0;
  for (unsigned seed = 0; seed < 150; ++seed) {
    const TemporaryFolder folder;
    const RandomLibraries libraries(seed, folder.Path());
    CheckedProduct product;
    product.bin = "bin";
    for (const std::string& id : libraries.IDs()) {
      product.model.ServerPluginDescriptions.emplace_back().ID = id;
      product.names.push_back("bin/" + id + ".dll");
    }
    PluginLibraryReader(product, folder.Path(), SystemNames(),
                        ThisLibrarySystem(folder.Path() / "bin"))
        .Read();
    for (const std::string& id : libraries.IDs()) {
      const std::string message = LoaderMessage(folder.Path() / "bin" / (id + ".dll"));
      ++(message.empty() ? loaded : refused);
      ASSERT_EQ(message.empty(), IsSaidToLoad(*product.libraries.at(id)))
          << "seed " << seed << ", " << id << ": " << message << "\n"
          << libraries.Text();
    }
  }
  EXPECT_GT(loaded, 50);
  EXPECT_GT(refused, 50);
}

}  // namespace
