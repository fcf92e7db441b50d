#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/FileContent.h"
#include "host/FrameLibrary.h"
#include "host/PluginHeads.h"
#include "host/ProductCheck.h"
#include "host/Screen.h"
#include "host/StagedProduct.h"
#include "host/SystemLibraries.h"
#include "host/UnlessStopped.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"
#include "workbench/check/CheckReport.h"
#include "workbench/check/FindingsJson.h"
#include "workbench/check/FindingsSarif.h"
#include "workbench/check/FindingsText.h"
#include "workbench/check/ProductChanges.h"
#include "workbench/check/RuleText.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kUsualColumns = 80;

void AddOptions(CLI::App& command, Options& options) {
  AddProductOptions(command, options);
  CheckOptions& check = options.check;

  const std::string rules = "The rules";
  command
      .add_option("--select", check.select,
                  "Only these: IDs or areas, with commas between:\nTEV203,TEV3,libraries")
      ->type_name("RULES")
      ->group(rules);
  command.add_option("--ignore", check.ignore, "Not these")->type_name("RULES")->group(rules);
  command.add_flag("--list-rules", check.listRules, "Print the rules, check nothing")->group(rules);
  command.add_option("--explain", check.explain, "Print what a rule says of itself")
      ->type_name("RULE")
      ->group(rules);

  const std::string shown = "What it shows";
  command.add_option("--format", check.format, "text, json or sarif (default: text)")
      ->type_name("FORMAT")
      ->check(OneOf({"text", "json", "sarif"}))
      ->group(shown);
  command.add_option("--output", check.output, "Write the findings to this file")
      ->type_name("FILE")
      ->check(Path())
      ->group(shown);
  AddColorOption(command, options, shown);

  command
      .add_option("--with", check.with,
                  "The product as if the addon in this folder were\ninstalled: a folder with "
                  "TevAddons/ID/ID.xml,\nMETA_INFO and the libraries")
      ->type_name("DIR")
      ->check(Path())
      ->group(shown);
  command
      .add_option("--against", check.against,
                  "What changes from the product of this folder\nto that of --bin; only new "
                  "findings are shown")
      ->type_name("DIR")
      ->check(Path())
      ->group(shown);

  const std::string result = "What counts";
  command
      .add_option("--fail-on", check.failOn,
                  "Exit with 1 on findings from this severity up:\nerror, warning or note "
                  "(default: error)")
      ->type_name("SEVERITY")
      ->check(OneOf({"error", "warning", "note"}))
      ->group(result);
  command.add_option("--baseline", check.baseline, "Accept the findings of this file")
      ->type_name("FILE")
      ->check(Path())
      ->group(result);
  command
      .add_option("--write-baseline", check.writeBaseline,
                  "Write a file that accepts the findings of now")
      ->type_name("FILE")
      ->check(Path())
      ->group(result);
}

std::vector<const Rule*> ChosenRules(const CheckOptions& options) {
  RuleChoice choice = ChooseRules(AllRules(), options.select, options.ignore);
  if (!choice.problem.empty()) throw UsageError(choice.problem);
  return std::move(choice.rules);
}

/// The product's folder as a text names it: from the current folder when it lies there.
std::string ShownFolder(const fs::path& folder) {
  std::error_code error;
  const fs::path current = fs::canonical(fs::current_path(error), error);
  const fs::path relative = folder.lexically_relative(current);
  const bool below = !error && !relative.empty() && *relative.begin() != "..";
  if (below && relative == ".") return std::string();
  std::string shown = LocalFromPath((below ? relative : folder).generic_string());
  if (shown.back() != '/') shown += '/';
  return shown;
}

/// The lines of the model files, by the names that findings use.
class SourceLines {
 public:
  /// `staged`: null when the product was read as it is.
  SourceLines(const CheckedProduct& product, const StagedProduct* staged) {
    if (staged != nullptr) m_texts.emplace(staged->InstalledFile(), &staged->InstalledText());
    for (const CheckedFile& file : product.files) m_texts.emplace(file.readName, &file.text);
  }

  std::string Line(const std::string& file, int line) {
    const auto text = m_texts.find(file);
    if (text == m_texts.end() || line < 1) return std::string();
    const std::vector<std::size_t>& begins = BeginsOf(file, *text->second);
    const auto index = static_cast<std::size_t>(line) - 1;
    if (index >= begins.size()) return std::string();
    const std::size_t end = text->second->find_first_of("\r\n", begins[index]);
    return text->second->substr(begins[index], end - begins[index]);
  }

 private:
  const std::vector<std::size_t>& BeginsOf(const std::string& file, const std::string& text) {
    std::vector<std::size_t>& begins = m_begins[file];
    if (begins.empty()) {
      begins.push_back(0);
      for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n') begins.push_back(i + 1);
      }
    }
    return begins;
  }

  std::map<std::string, const std::string*> m_texts;
  std::map<std::string, std::vector<std::size_t>> m_begins;
};

ProductPlace PlaceOfProduct(const char* option, const fs::path& bin) {
  auto place = FindProduct(bin, SystemNames());
  if (!place) throw UsageError(std::string(option) + ": " + LocalFromPath(bin) + " is no folder");
  return std::move(*place);
}

bool ReadsLibraries(const std::vector<const Rule*>& rules) {
  return std::any_of(rules.begin(), rules.end(),
                     [](const Rule* rule) { return AreaOf(rule->id) == "libraries"; });
}

/// Reads a product. `isLast`: no other one is read after it, which needs the frame's library anew.
std::unique_ptr<CheckedProduct> ReadProduct(const ProductPlace& place, std::int32_t module,
                                            bool withLibraries, bool isLast) {
  const LibrarySystem libraries = ThisLibrarySystem(place.folder / PathFromLocal(place.bin));
  FrameLibrary frame(FrameLibrary::PathBesideProgram());
  auto product = ReadProductWithFrame(place, module, frame, withLibraries ? &libraries : nullptr);
  if (!isLast) frame.Unload();
  return product;
}

CheckReport MakeReport(const CheckedProduct& product, const fs::path& folder,
                       const CheckOptions& options, std::vector<const Rule*> rules) {
  CheckReport report;
  report.toolVersion = TEV_VERSION;
  report.productName = product.model.Product;
  report.productVersion = product.model.Version;
  report.folder = LocalFromPath(folder.generic_string());
  report.shownFolder = ShownFolder(folder);
  report.findings = RunRules(rules, product);
  if (!options.baseline.empty()) {
    const BaselineReading reading = ReadBaseline(ReadFileText("--baseline", options.baseline));
    if (!reading.problem.empty()) {
      throw UsageError("--baseline: " + options.baseline + ": " + reading.problem);
    }
    report.baseline = Apply(reading.baseline, report.findings, rules, AllRules());
  }
  report.rules = std::move(rules);
  return report;
}

/// What changes from the product at one place to that at the other.
ProductChanges CompareWithFiles(const CheckedProduct& before, const ProductPlace& placeBefore,
                                const CheckedProduct& after, const ProductPlace& placeAfter) {
  const auto path = [](const ProductPlace& place, const std::string& name) {
    return place.folder / PathFromLocal(place.bin) / PathFromLocal(name);
  };
  ProductChanges changes = CompareProducts(before, after, [&](const std::string& name) {
    return HaveDifferentContent(path(placeBefore, name), path(placeAfter, name));
  });
  changes.folder = ShownFolder(placeBefore.folder);
  return changes;
}

/// Adds what changes from `before`; its findings are the baseline.
void AddChanges(CheckReport& report, const CheckedProduct& before, ProductChanges changes) {
  report.baseline =
      Apply(BaselineOf(RunRules(report.rules, before)), report.findings, report.rules, AllRules());
  if (!changes.AreKnown()) report.baseline->absent.clear();  // nothing starts: not mended
  changes.mended = report.baseline->absent;
  report.changes = std::move(changes);
}

/// Names places where they really are, not where they are in the staged product.
void UseRealPlaces(CheckReport& report, const StagedProduct& staged) {
  staged.UsePlacesOfProduct(report.findings);
  for (const auto& [name, file] : staged.AddonFiles()) {
    const fs::path absolute = fs::absolute(file).lexically_normal();
    report.elsewhere[name] = {LocalFromPath(absolute.generic_string()),
                              LocalFromPath(file.generic_string())};
  }
}

std::string TextOf(const CheckReport& report, const CheckedProduct& product,
                   const StagedProduct* staged, const Options& options, const Output& output) {
  if (options.check.format == "json") return FindingsJson(report);
  if (options.check.format == "sarif") return FindingsSarif(report);
  const bool onTerminal = options.check.output.empty() && output.IsTerminal();
  TextStyle style;
  style.color = WantsColor(options.color, onTerminal);
  if (onTerminal) style.columns = static_cast<std::size_t>(output.Columns());
  SourceLines lines(product, staged);
  const std::string changes = report.changes ? ChangesText(*report.changes) : std::string();
  return changes + FindingsText(
                       report,
                       [&](const std::string& file, int line) { return lines.Line(file, line); },
                       style);
}

bool HasFailed(const CheckReport& report, const std::string& failOn) {
  const FindingCounts counts = CountFindings(report);
  if (counts.errors > 0) return true;
  if (failOn != "error" && counts.warnings > 0) return true;
  return failOn == "note" && counts.notes > 0;
}

ExitStatus CheckProduct(const Options& options, HostContext& context) {
  std::vector<const Rule*> rules = ChosenRules(options.check);
  const fs::path bin =
      options.bin.empty() ? PathFromLocal(ProcessPath()).parent_path() : PathFromLocal(options.bin);
  const CheckOptions& check = options.check;
  const ProductPlace place = PlaceOfProduct("--bin", bin);
  std::optional<StagedProduct> staged;
  if (!check.with.empty()) staged.emplace(place, PathFromLocal(check.with));
  std::optional<ProductPlace> earlier;
  if (!check.against.empty()) earlier = PlaceOfProduct("--against", PathFromLocal(check.against));
  const bool withLibraries = ReadsLibraries(rules);
  std::unique_ptr<CheckedProduct> product;
  std::unique_ptr<CheckedProduct> before;
  ProductChanges changes;
  ReadUnlessStopped(
      context,
      [&] {
        if (earlier) before = ReadProduct(*earlier, options.module, withLibraries, false);
        const ProductPlace& now = staged ? staged->Place() : place;
        product = ReadProduct(now, options.module, withLibraries, true);
        if (before) changes = CompareWithFiles(*before, *earlier, *product, now);
      },
      [&] {
        if (staged) staged->Remove();
      });
  CheckReport report = MakeReport(*product, place.folder, check, std::move(rules));
  if (before) AddChanges(report, *before, std::move(changes));
  if (staged) UseRealPlaces(report, *staged);
  if (!check.writeBaseline.empty()) {
    WriteFileText("--write-baseline", check.writeBaseline, WriteBaseline(report.findings));
  }
  const std::string text =
      TextOf(report, *product, staged ? &*staged : nullptr, options, context.output);
  if (check.output.empty()) {
    WriteOutput(context, text);
  } else {
    WriteFileText("--output", check.output, text);
  }
  return HasFailed(report, check.failOn) ? kFindings : kOk;
}

ExitStatus Run(const Options& options, HostContext& context) {
  const CheckOptions& check = options.check;
  const std::size_t columns = context.output.IsTerminal()
                                  ? static_cast<std::size_t>(context.output.Columns())
                                  : kUsualColumns;
  if (check.listRules) {
    context.output.Write(RuleList(ChosenRules(check)));
    return kOk;
  }
  if (!check.explain.empty()) {
    const Rule* rule = RuleNamed(AllRules(), check.explain);
    if (rule == nullptr) throw UsageError("--explain: " + NoSuchRule(AllRules(), check.explain));
    context.output.Write(ExplainedRule(*rule, columns));
    return kOk;
  }
  return CheckProduct(options, context);
}

}  // namespace

Command CheckCommand() {
  return {"check", "Find what is wrong with a product, without starting it", &AddOptions, &Run};
}
