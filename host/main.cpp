// HUB: the host program. Loads the frame as a site's host does and shows people what goes on.

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <iostream>

#include "host/Commands.h"
#include "reference/base/Log.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/os/LibraryFolder.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"
#include "reference/xrt/ExecutablePath.h"

namespace fs = std::filesystem;

namespace {

void AddCommonOptions(CLI::App& command, Options& options) {
  command
      .add_option("--bin", options.bin,
                  "Folder that stands for the running executable's own: where the product's "
                  "META_INFO and plugin libraries lie (default: HUB's own)")
      ->type_name("DIR");
  command
      .add_option("--module", options.module,
                  "The running module that the platform reports; 2 is the distributed one")
      ->type_name("N")
      ->capture_default_str();
  command.add_option("--log", options.log, "Append every log line to this file")->type_name("FILE");
}

/// Makes `bin` the folder of the running executable, which keeps its own name.
void Pretend(const std::string& bin) {
  if (bin.empty()) return;
  const fs::path extension = fs::path(ProcessPath()).extension();
  const fs::path folder = fs::absolute(PathFromLocal(bin)).make_preferred();
  SetExecutablePath(LocalFromPath(folder / fs::path("HUB").replace_extension(extension)));
  LookForLibrariesIn(LocalFromPath(folder));
}

ExitStatus Main(int argc, char** argv) {
  StopSignal stop;
  SuppressErrorDialogs();
  CLI::App app("HUB: runs an installed product through the plugin frame");
  app.require_subcommand(1);
  Options options;
  CLI::App& model = *app.add_subcommand(
      "model", "Print what the frame hands over of the product, as one JSON object");
  AddCommonOptions(model, options);
  CLI::App& run = *app.add_subcommand(
      "run", "Start the product, show its plugins, and stop it on Ctrl-C or after a time");
  AddCommonOptions(run, options);
  run.add_flag("--json", options.json, "Print one JSON object instead of progress and a table");
  run.add_option("--seconds", options.seconds, "Stop after so many seconds")
      ->type_name("S")
      ->check(CLI::NonNegativeNumber);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kOk : kUsage;
  }
  LogConfig log;
  log.consoleLevel = 0;
  log.file = options.log;
  try {
    ConfigureLog(log);
  } catch (const std::exception& error) {
    std::cerr << "HUB: " << error.what() << std::endl;
    return kUsage;
  }
  Pretend(options.bin);
  SetRunningModule(options.module);
  return model.parsed() ? ModelCommand(options) : RunCommand(options, stop);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Main(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "HUB: " << error.what() << std::endl;
    return kFrameFailed;
  }
}
