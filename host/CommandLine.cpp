#include "host/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"
#include "workbench/output/Text.h"

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
    "  HUB check --bin /srv/site/bin             what is wrong with the product\n"
    "  HUB report                                where the last run's time went\n"
    "  HUB report new.jsonl --against old.jsonl  what changed since another run\n"
    "  HUB why video.server                      why it started when it did\n"
    "  HUB replay run.jsonl --output DIR         a product of stubs like that run\n"
    "  HUB shake --bin /srv/site/bin             which order it depends on\n"
    "  HUB model --bin /srv/site/bin             what the frame makes of the files\n"
    "\n"
    "Exit status of run: 0 all plugins started and stopped; 1 the frame failed;\n"
    "2 wrong use; 3 up, but degraded; 4 stopped before it was up, or left with\n"
    "plugins that had not returned; of a crash: the signal's own.\n"
    "Exit status of check: 0 no findings that count; 1 findings; 2 it cannot check.\n"
    "Exit status of report: 0; 1 a budget is exceeded; 2 it cannot report.\n"
    "Exit status of shake: 0 nothing found; 1 found; 2 it cannot run; 4 stopped.";

std::vector<Command> Commands() {
  return {RunCommand(),    CheckCommand(), ReportCommand(), WhyCommand(),
          ReplayCommand(), ShakeCommand(), ModelCommand()};
}

std::string Quoted(const std::string& word) {
  return "\"" + Escaped(word) + "\"";
}

/// The absolute path with symbolic links resolved; the file itself need not exist.
fs::path Resolved(const fs::path& path) {
  std::error_code error;
  const fs::path full = fs::absolute(path, error);
  const fs::path resolved = fs::weakly_canonical(full, error);
  return error ? full : resolved;
}

/// Whether writing `file` could damage the product: it lies below the folder that holds `bin` and
/// has the extension of a model file, library or executable.
bool IsProductFile(const std::string& file, const fs::path& bin) {
  if (file.empty()) return false;
  std::error_code error;
  const fs::path target = Resolved(PathFromLocal(file));
  const fs::path product = Resolved(bin).parent_path();
  const auto both = std::mismatch(product.begin(), product.end(), target.begin(), target.end());
  if (both.first != product.end()) return false;  // it lies elsewhere
  static const std::set<std::string> own = {".xml", ".data", ".dll", ".exe", ".so"};
  std::string name = LocalFromPath(target.filename());
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  const bool isVersioned = name.find(".so.") != std::string::npos;
  return isVersioned || own.count(LocalFromPath(PathFromLocal(name).extension())) != 0;
}

/// Why `file` cannot be appended to; empty when it can. Opening or filling a pipe may block.
std::string WhyNotWritten(const fs::path& file) {
  std::error_code error;
  const fs::file_type type = fs::status(file, error).type();
  if (type == fs::file_type::fifo) return "is a pipe";
  return type == fs::file_type::directory ? "is a directory" : "";
}

/// Why a flight record must not replace the existing `file`; empty when it may.
std::string WhyNotReplaced(const fs::path& file) {
  std::error_code error;
  const fs::file_type type = fs::status(file, error).type();
  if (type != fs::file_type::regular || fs::file_size(file, error) == 0) return std::string();
  const std::string head = R"({"record":"head")";
  std::string begin(head.size(), '\0');
  std::ifstream(file, std::ios::binary)
      .read(begin.data(), static_cast<std::streamsize>(begin.size()));
  return begin == head ? std::string() : "is there and is no flight record";
}

/// The folder directly in `bin` that was probably meant: `bin` has no model file, and this one has
/// META_INFO. Empty for none.
fs::path MeantFolder(const fs::path& bin) {
  std::error_code error;
  const fs::path product = bin / "..";
  for (const fs::path& file :
       {bin / "META_INFO", product / "Product.xml", product / "Product.data"}) {
    if (fs::exists(file, error)) return {};
  }
  fs::path meant;
  for (fs::directory_iterator at(bin, error), end; !error && at != end; at.increment(error)) {
    const fs::path& folder = at->path();
    std::error_code none;
    const bool isOne = fs::is_directory(folder / "META_INFO", none);
    if (isOne && (meant.empty() || folder < meant)) meant = folder;
  }
  return meant;
}

/// Options that exclude each other, as a sentence; empty for none.
std::string WhatExcludes(const Options& options) {
  if (options.json && options.events) return "--json and --events: only one of them";
  if (!options.check.against.empty() && !options.check.baseline.empty()) {
    return "--against and --baseline: only one of them";
  }
  if (options.noRecord && !options.record.empty()) {
    return "--record and --no-record: only one of them";
  }
  if (options.noRecord && !options.reportPage.empty()) {
    return "--report and --no-record: the report is made of the flight record";
  }
  return std::string();
}

/// An option whose value is another option; empty for none.
std::string WhatLacksAValue(const Options& options) {
  for (const auto& [option, value] :
       {std::pair("--bin", options.bin), std::pair("--log", options.log),
        std::pair("--record", options.record), std::pair("--state", options.state),
        std::pair("--report", options.reportPage), std::pair("--output", options.check.output),
        std::pair("--baseline", options.check.baseline),
        std::pair("--write-baseline", options.check.writeBaseline),
        std::pair("--against", options.check.against), std::pair("--with", options.check.with),
        std::pair("--keep", options.shake.keep), std::pair("--output", options.report.output),
        std::pair("--budget", options.report.budget), std::pair("--record", options.why.record),
        std::pair("--output", options.replay.output), std::pair("--each", options.replay.each)}) {
    if (value.rfind("--", 0) != 0) continue;
    return std::string(option) + " needs a value, and " + Quoted(value) + " is an option";
  }
  return std::string();
}

/// What is wrong with the product's folder, `bin`, or with the one to compare with; empty when
/// nothing is.
std::string WhatIsWrongWithFolders(const Options& options, const fs::path& bin) {
  std::error_code error;
  if (!fs::exists(bin, error)) return "--bin: " + options.bin + " does not exist";
  if (!fs::is_directory(bin, error)) return "--bin: " + options.bin + " is no folder";
  for (const auto& [option, folder] :
       {std::pair("--bin", options.bin), std::pair("--against", options.check.against)}) {
    const fs::path meant = folder.empty() ? fs::path() : MeantFolder(PathFromLocal(folder));
    if (meant.empty()) continue;
    return std::string(option) + ": " + folder + " has no META_INFO; is " + option + " " +
           LocalFromPath(meant) + " meant?";
  }
  return std::string();
}

/// What is wrong with the files that are written; empty when nothing is.
std::string WhatIsWrongWithFiles(const Options& options, const fs::path& bin) {
  for (const auto& [option, file] :
       {std::pair("--log: ", options.log), std::pair("--record: ", options.record),
        std::pair("--output: ", options.check.output),
        std::pair("--write-baseline: ", options.check.writeBaseline),
        std::pair("--output: ", options.report.output),
        std::pair("--report: ", options.reportPage)}) {
    if (IsProductFile(file, bin)) {
      return option + file + " is one of the product's own files, or could pass for one";
    }
    const std::string why = file.empty() ? file : WhyNotWritten(PathFromLocal(file));
    if (!why.empty()) return std::string(option).append(file).append(" ").append(why);
  }
  if (!options.reportPage.empty()) {
    const fs::path folder = fs::absolute(PathFromLocal(options.reportPage)).parent_path();
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
      return "--report: the folder " + LocalFromPath(folder) + " does not exist";
    }
  }
  if (options.record.empty()) return std::string();
  const fs::path record = PathFromLocal(options.record);
  const std::string why = WhyNotReplaced(record);
  return why.empty() ? why : "--record: " + options.record + " " + why;
}

/// Files of the run that are one and the same, as a sentence; empty for none.
std::string WhatIsTheSame(const Options& options) {
  const std::pair<const char*, const std::string&> kept[] = {
      {"--log", options.log}, {"--record", options.record}, {"--report", options.reportPage}};
  for (std::size_t i = 0; i < std::size(kept); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (kept[i].second.empty() || kept[j].second.empty()) continue;
      if (Resolved(PathFromLocal(kept[i].second)) != Resolved(PathFromLocal(kept[j].second)))
        continue;
      return std::string(kept[j].first) + " and " + kept[i].first + ": " + kept[i].second +
             " cannot be both";
    }
  }
  return std::string();
}

/// What is wrong with options that the parser has accepted; empty when nothing is.
std::string WhatIsWrong(const Options& options) {
  const fs::path bin =
      options.bin.empty() ? PathFromLocal(ProcessPath()).parent_path() : PathFromLocal(options.bin);
  for (const std::string& wrong :
       {WhatExcludes(options), WhatLacksAValue(options), WhatIsWrongWithFolders(options, bin),
        WhatIsTheSame(options), WhatIsWrongWithFiles(options, bin)}) {
    if (!wrong.empty()) return wrong;
  }
  return std::string();
}

bool LooksLikeAnOption(const std::string& word) {
  return word.size() > 1 && word.front() == '-';
}

/// What is wrong with a command line that names no command.
std::string NoCommand(const std::vector<std::string>& words) {
  std::vector<std::string> names;
  for (const Command& command : Commands()) names.emplace_back(command.name);
  const std::string commands = JoinNames(names, names.size());
  if (words.empty()) return "no command is given; there are " + commands + " (HUB --help)";
  return Quoted(words.front()) +
         (LooksLikeAnOption(words.front()) ? " stands where the command belongs"
                                           : " is no command") +
         "; there are " + commands + " (HUB --help)";
}

/// What is wrong with a word that the parser could not assign to anything.
std::string UnexpectedWord(const CLI::App& app, const CLI::App& command,
                           const std::vector<std::string>& words) {
  const std::string& name = command.get_name();
  const std::string help = " (HUB " + name + " --help)";
  const std::string word = app.remaining(true).front();
  const auto isOne = [&](const std::string& other) { return other == word || other == name; };
  if (*std::find_if(words.begin(), words.end(), isOne) == word) {
    return Quoted(word) + " stands before the command: first " + name + ", then its options" + help;
  }
  return Quoted(word) +
         (LooksLikeAnOption(word) ? " is no option of " : " belongs to no option of ") + name +
         help;
}

/// The option of `command` that the parser's error text is about. The text names it before a value.
const CLI::Option* OptionIn(const std::string& sentence, const CLI::App& command) {
  const std::size_t begin = sentence.find("--");
  if (begin == std::string::npos) return nullptr;
  const std::size_t end = sentence.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", begin);
  return command.get_option_no_throw(sentence.substr(begin, end - begin));
}

/// What is wrong with the value of an option; also that a value is missing or not allowed.
std::string WrongValue(const CLI::ParseError& error, const CLI::Option& option) {
  const std::string name = option.get_name();
  if (option.get_expected_max() == 0) return name + " takes no value";
  const std::vector<std::string>& values = option.results();
  if (values.size() > 1 && option.get_expected_max() == 1)
    return name + " is given " + Count(values.size(), "time");
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
    return name + " needs a value: " + name + " " + option.get_type_name();
  }
  return Escaped(error.what());
}

/// What is wrong with a command line that the parser has refused, in one sentence.
std::string WrongUse(const CLI::ParseError& error, const CLI::App& app,
                     const std::vector<std::string>& words) {
  const std::vector<const CLI::App*> commands =
      app.get_subcommands([](const CLI::App* command) { return command->parsed(); });
  if (commands.empty()) return NoCommand(words);
  const CLI::App& command = *commands.front();
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr)
    return UnexpectedWord(app, command, words);
  const CLI::Option* option = OptionIn(error.what(), command);
  return option == nullptr ? error.what() : WrongValue(error, *option);
}

/// Accepts auto, always or never and replaces it by the number of the enumerator.
CLI::Validator ColorName() {
  return CLI::Validator(
      [](std::string& text) {
        const std::map<std::string, Color> colors = {
            {"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}};
        const auto color = colors.find(CLI::detail::to_lower(text));
        if (color == colors.end()) return "\"" + text + "\" is neither auto, always nor never";
        text = std::to_string(static_cast<int>(color->second));
        return std::string();
      },
      std::string());
}

}  // namespace

CLI::Validator Path() {
  return CLI::Validator(
      [](const std::string& text) { return text.empty() ? std::string("\"\" is no path") : ""; },
      std::string());
}

CLI::Validator Between(int least, int most) {
  return CLI::Validator(
      [least, most](const std::string& text) {
        std::int64_t number = 0;
        const bool good =
            CLI::detail::lexical_cast(text, number) && number >= least && number <= most;
        return good ? std::string()
                    : Quoted(text) + " is no whole number from " + std::to_string(least) + " to " +
                          std::to_string(most);
      },
      std::string());  // no text for the help: the option's own help line names the range
}

CLI::Validator Seconds() {
  return CLI::Validator(
      [](const std::string& text) {
        double seconds = 0;
        const bool good =
            CLI::detail::lexical_cast(text, seconds) && std::isfinite(seconds) && seconds >= 0;
        return good ? std::string() : "\"" + text + "\" is no number of seconds from 0 up";
      },
      std::string());
}

CLI::Validator OneOf(const std::vector<std::string>& words) {
  return CLI::Validator(
      [words](const std::string& text) {
        if (std::count(words.begin(), words.end(), text) != 0) return std::string();
        std::string known;
        for (std::size_t i = 0; i < words.size(); ++i) {
          known += (i == 0 ? "neither " : i + 1 < words.size() ? ", " : " nor ") + words[i];
        }
        return Quoted(text) + " is " + known;
      },
      std::string());
}

void AddProductOptions(CLI::App& command, Options& options) {
  const std::string product = "The product";
  command
      .add_option("--bin", options.bin,
                  "Folder of META_INFO and the plugin libraries,\n"
                  "instead of the executable's own")
      ->type_name("DIR")
      ->check(Path())
      ->group(product);
  command
      .add_option(
          "--module", options.module,
          "The running module that the platform\nreports (default: 1; 2: the distributed one)")
      ->type_name("N")
      ->check(Between(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()))
      ->group(product);
}

void AddRunsOptions(CLI::App& command, Options& options, RunsOptions& runs) {
  const std::string run = "The run";
  command
      .add_option(
          "RUNS", runs.files,
          "Flight records and logs (default: the record of\nthe last run; with --bin of that "
          "product)")
      ->type_name("")
      ->check(Path())
      ->group(run);
  command
      .add_option("--run", runs.run,
                  "Which of several runs, from 1 for the first\n(default: the last)")
      ->type_name("N")
      ->check(Between(1, 1000000))
      ->group(run);
  AddProductOptions(command, options);
  command
      .add_option("--time-format", runs.timeFormat,
                  "How stamps in logs are written, as for\nstrptime: '%d/%m/%Y %H:%M:%S'")
      ->type_name("FORMAT")
      ->group(run);
}

void AddLogOptions(CLI::App& command, Options& options) {
  const std::string log = "The log";
  command.add_option("--log", options.log, "Append every log line to this file")
      ->type_name("FILE")
      ->check(Path())
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
                  "Rename the file when it has so many MiB\n(default: 64)")
      ->type_name("MIB")
      ->check(Between(1, 1 << 20))
      ->group(log);
  command
      .add_option("--log-files", options.logFiles, "Keep so many renamed log files\n(default: 8)")
      ->type_name("N")
      ->check(Between(1, 1000))
      ->group(log);
}

void AddWorkersOption(CLI::App& command, Options& options, const std::string& group) {
  command
      .add_option(
          "--workers", options.workers,
          "Most threads that start or stop plugins\n(default: as many as there are plugins)")
      ->type_name("N")
      ->check(Between(1, 10000))
      ->group(group);
}

void AddColorOption(CLI::App& command, Options& options, const std::string& group) {
  command
      .add_option("--color", options.color,
                  "auto, always or never; auto: on a terminal,\nunless NO_COLOR is set")
      ->type_name("WHEN")
      ->transform(ColorName())
      ->group(group);
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
    added.formatter(std::make_shared<CLI::Formatter>());  // else it shares the program's formatter
    added.get_formatter()->column_width(kHelpColumn);
    command.addOptions(added, request.options);
    added.callback([&request, run = command.run] { request.run = run; });
  }
  const std::vector<std::string> words(context.commandLine.begin() + 1, context.commandLine.end());
  std::string wrong;
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    wrong = WhatIsWrong(request.options);
  } catch (const CLI::Success& asked) {
    std::ostringstream output;
    app.exit(asked, output);
    status = kOk;
    context.output.Write(output.str());
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    wrong = WrongUse(error, app, words);
  }
  if (wrong.empty()) return request;
  context.output.WriteError(wrong);
  status = kUsage;
  return std::nullopt;
}
