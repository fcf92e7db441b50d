#include "bench/TimedRuns.h"

#include <stdio.h>  // popen

#include <fstream>
#include <memory>

namespace fs = std::filesystem;

namespace {

struct ClosePipe {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

/// The numbers that a command prints, by name.
std::map<std::string, double> NumbersOf(const std::string& command) {
  const std::unique_ptr<std::FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
  std::map<std::string, double> numbers;
  char name[64] = {};
  double number = 0;
  while (pipe && std::fscanf(pipe.get(), "%63s %lf", name, &number) == 2) numbers[name] = number;
  return numbers;
}

}  // namespace

fs::path LibraryThatTakes(int milliseconds) {
  return fs::path(TEV_BENCH_DATA) / "libraries" /
         ("takes_" + std::to_string(milliseconds) + ".dll");
}

fs::path LibraryThatWorks() {
  return fs::path(TEV_BENCH_DATA) / "libraries" / "works_20.dll";
}

std::vector<GeneratedPlugin> FourLevels(const fs::path& library, const fs::path& slow) {
  constexpr std::size_t kWide = 10;
  constexpr std::size_t kLevels = 4;
  std::vector<GeneratedPlugin> plugins(kLevels * kWide);
  for (std::size_t i = 0; i < plugins.size(); ++i) {
    plugins[i] = {GeneratedID(i), {}, i == kWide ? slow : library};
    const std::size_t level = i / kWide;
    for (std::size_t k = 0; level > 0 && k < kWide; ++k) {
      plugins[i].dependsOn.push_back(plugins[(level - 1) * kWide + k].id);
    }
  }
  return plugins;
}

std::vector<GeneratedPlugin> IndependentPlugins(std::size_t count) {
  std::vector<GeneratedPlugin> plugins(count);
  for (std::size_t i = 0; i < count; ++i) plugins[i] = {GeneratedID(i), {}, LibraryThatTakes(50)};
  return plugins;
}

std::vector<GeneratedPlugin> WaitingPlugins(std::size_t count) {
  std::vector<GeneratedPlugin> plugins = IndependentPlugins(count + 1);
  plugins[0].library = LibraryThatTakes(1900);
  for (std::size_t i = 1; i <= count; ++i) plugins[i].dependsOn = {plugins[0].id};
  return plugins;
}

std::map<std::string, double> RunTimed(const fs::path& product, const std::string& arguments) {
  return NumbersOf(TEV_TIMED_RUN " '" + product.string() + "' " + arguments);
}

double LoadTimed(const fs::path& product, const std::vector<GeneratedPlugin>& plugins,
                 int threads) {
  std::ofstream order(product / "bin" / "order.txt");
  for (const GeneratedPlugin& plugin : plugins) {
    order << plugin.id;
    for (const std::string& other : plugin.dependsOn) order << " " << other;
    order << "\n";
  }
  order.close();
  const std::string way = threads == 0 ? "serial" : "parallel " + std::to_string(threads);
  const auto numbers = NumbersOf(TEV_LOADER " '" + (product / "bin").string() + "' " + way);
  const auto start = numbers.find("start_ms");
  return start == numbers.end() ? -1 : start->second;
}
