#include "host/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kShortHelpColumn = 20;
constexpr std::size_t kHelpColumn = 32;
constexpr char kDescription[] = "HUB: runs an installed product through the plugin frame";
constexpr char kFooter[] =
    "\nExamples:\n"
    "  HUB run --bin /srv/site/bin               run until Ctrl-C, show the plugins\n"
    "  HUB run --bin /srv/site/bin --seconds 5 --json > run.json\n"
    "  HUB run --start-timeout 60 --log hub.log  HUB's own folder, for a supervisor\n"
    "  HUB model --bin /srv/site/bin             what the frame makes of the files\n"
    "\n"
    "Exit status of run: 0 all plugins started and stopped; 1 the frame failed;\n"
    "2 wrong use; 3 up, but degraded; 4 stopped before it was up, or left with\n"
    "plugins that had not returned; of a crash: the signal's own.";

std::vector<Command> Commands() {
  return {RunCommand(), ModelCommand()};
}

/// Whether a file written there would damage the product that lies around `bin`.
bool IsOneOfTheProduct(const std::string& file, const fs::path& bin) {
  if (file.empty()) return false;
  std::error_code error;
  const fs::path target = fs::weakly_canonical(PathFromLocal(file), error);
  const fs::path product = fs::weakly_canonical(bin, error).parent_path();
  const auto both = std::mismatch(product.begin(), product.end(), target.begin(), target.end());
  if (both.first != product.end()) return false;  // it lies elsewhere
  static const std::set<std::string> own = {".xml", ".data", ".dll", ".exe", ".so"};
  std::string extension = LocalFromPath(target.extension());
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return own.count(extension) != 0;
}

/// Why a flight record cannot take the place of what is there now; empty when it can.
std::string WhyNotReplaced(const fs::path& file) {
  std::error_code error;
  const fs::file_type type = fs::status(file, error).type();
  if (type == fs::file_type::fifo || type == fs::file_type::directory) return "is no file";
  if (type != fs::file_type::regular || fs::file_size(file, error) == 0) return std::string();
  const std::string head = R"({"record":"head")";
  std::string begin(head.size(), '\0');
  std::ifstream(file, std::ios::binary)
      .read(begin.data(), static_cast<std::streamsize>(begin.size()));
  return begin == head ? std::string() : "is there and is no flight record";
}

/// What is wrong with a request that the command line's grammar allows; empty when nothing is.
std::string WhatIsWrong(const Options& options) {
  if (options.json && options.events) return "--json and --events: only one of them";
  if (options.noRecord && !options.record.empty()) return "--record and --no-record: only one";
  std::error_code error;
  const fs::path bin =
      options.bin.empty() ? PathFromLocal(ProcessPath()).parent_path() : PathFromLocal(options.bin);
  if (!fs::exists(bin, error)) return "--bin: " + options.bin + " does not exist";
  if (!fs::is_directory(bin, error)) return "--bin: " + options.bin + " is no folder";
  for (const auto& [option, file] :
       {std::pair("--log: ", options.log), std::pair("--record: ", options.record)}) {
    if (IsOneOfTheProduct(file, bin)) {
      return option + file + " is one of the product's own files, or could pass for one";
    }
  }
  if (options.record.empty()) return std::string();
  const fs::path record = PathFromLocal(options.record);
  if (!options.log.empty() && fs::weakly_canonical(record, error) ==
                                  fs::weakly_canonical(PathFromLocal(options.log), error)) {
    return "--log and --record: " + options.record + " cannot be both";
  }
  const std::string why = WhyNotReplaced(record);
  return why.empty() ? why : "--record: " + options.record + " " + why;
}

}  // namespace

CLI::Validator Between(int least, int most) {
  return CLI::Range(least, most).description("");  // the help line says it in words
}

void AddProductOptions(CLI::App& command, Options& options) {
  const std::string product = "The product";
  command
      .add_option("--bin", options.bin,
                  "Folder of META_INFO and the plugin libraries,\n"
                  "instead of the executable's own")
      ->type_name("DIR")
      ->group(product);
  command
      .add_option(
          "--module", options.module,
          "The running module that the platform\nreports (default: 1; 2: the distributed one)")
      ->type_name("N")
      ->group(product);

  const std::string log = "The log";
  command.add_option("--log", options.log, "Append every log line to this file")
      ->type_name("FILE")
      ->group(log);
  command
      .add_option("--log-level", options.logLevel,
                  "Only lines from this level up: 3 progress,\n4 tolerated, 5 failure, 6 fatal "
                  "(default: all)")
      ->type_name("N")
      ->check(Between(0, 6))
      ->group(log);
  command
      .add_option("--log-size", options.logSize,
                  "Put the file aside when it has so many MiB\n(default: 64)")
      ->type_name("MIB")
      ->check(Between(1, 1 << 20))
      ->group(log);
  command
      .add_option("--log-files", options.logFiles,
                  "Keep so many files that were put aside\n(default: 8)")
      ->type_name("N")
      ->check(Between(1, 1000))
      ->group(log);
}

std::optional<Request> ReadCommandLine(HostContext& context, ExitStatus& status) {
  CLI::App app(kDescription, "HUB");
  app.set_version_flag("--version", "HUB " TEV_VERSION);
  app.get_formatter()->column_width(kShortHelpColumn);
  app.footer(kFooter);
  app.require_subcommand(1);
  Request request;
  for (const Command& command : Commands()) {
    CLI::App& added = *app.add_subcommand(command.name, command.summary);
    added.formatter(std::make_shared<CLI::Formatter>());  // not the program's, which is inherited
    added.get_formatter()->column_width(kHelpColumn);
    command.addOptions(added, request.options);
    added.callback([&request, run = command.run] { request.run = run; });
  }
  try {
    std::vector<std::string> arguments(context.commandLine.rbegin(),
                                       context.commandLine.rend() - 1);
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    std::ostringstream output;
    std::ostringstream errors;
    status = app.exit(error, output, errors) == 0 ? kOk : kUsage;
    context.output.Write(output.str());
    std::cerr << errors.str();
    return std::nullopt;
  }
  const std::string wrong = WhatIsWrong(request.options);
  if (wrong.empty()) return request;
  context.output.WriteError(wrong);
  status = kUsage;
  return std::nullopt;
}
