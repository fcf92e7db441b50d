#include "bench/TimedRuns.h"

#include <stdio.h>  // popen

#include <memory>

namespace fs = std::filesystem;

namespace {

struct ClosePipe {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

}  // namespace

fs::path LibraryThatTakes(int milliseconds) {
  return fs::path(TEV_BENCH_DATA) / "libraries" /
         ("takes_" + std::to_string(milliseconds) + ".dll");
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
  const std::string command = TEV_TIMED_RUN " '" + product.string() + "' " + arguments;
  const std::unique_ptr<std::FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
  std::map<std::string, double> numbers;
  char name[64] = {};
  double number = 0;
  while (pipe && std::fscanf(pipe.get(), "%63s %lf", name, &number) == 2) numbers[name] = number;
  return numbers;
}
