#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/FileContent.h"
#include "host/PluginHeads.h"
#include "host/ProductCheck.h"
#include "host/RunFiles.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"
#include "workbench/check/DeclaredDependencies.h"
#include "workbench/output/Nearest.h"
#include "workbench/output/Text.h"
#include "workbench/report/WhyText.h"
#include "workbench/timeline/Timeline.h"

namespace fs = std::filesystem;

namespace {

void AddOptions(CLI::App& command, Options& options) {
  const std::string plugins = "The plugins";
  command.add_option("PLUGIN", options.why.plugin, "Why this plugin started when it did")
      ->type_name("")
      ->required()
      ->group(plugins);
  command.add_option("OTHER", options.why.other, "Why it started before or after this one")
      ->type_name("")
      ->group(plugins);
  AddProductOptions(command, options);
  command
      .add_option("--record", options.why.record,
                  "The flight record or log of the run (default:\nthe record of the last run, if "
                  "there is one)")
      ->type_name("FILE")
      ->check(Path())
      ->group("The run");
}

std::optional<RecordedRun> RunOf(const Options& options, HostContext& context) {
  if (!options.why.record.empty()) {
    const RunsOptions runs{{options.why.record}, 0, {}};
    return ReadRun(runs, options, LogOptionsOf(runs.files, runs, options, context));
  }
  const std::optional<fs::path> file = FindLastRecord(options.bin);
  return file ? std::optional<RecordedRun>(ReadRecord(*file)) : std::nullopt;
}

/// The folder of the product's executables: that of the command line, else that of the record, else
/// HUB's own.
std::string BinOf(const Options& options, const std::optional<RecordedRun>& run) {
  if (!options.bin.empty()) return options.bin;
  if (run) return LocalFromPath(fs::u8path(run->record.head.path));
  return LocalFromPath(PathFromLocal(ProcessPath()).parent_path());
}

/// Where dependencies are declared, as findings name places. Reads a description's dependencies
/// when they are first asked for.
class Declarations {
 public:
  explicit Declarations(const CheckedProduct* product) : m_product(product) {}

  std::string At(const std::string& plugin, const std::string& on) {
    if (m_product == nullptr) return std::string();
    const auto known = m_known.find(plugin);
    const std::map<std::string, Place>& places =
        known != m_known.end()
            ? known->second
            : m_known.emplace(plugin, DeclaredDependencies(*m_product, plugin)).first->second;
    const auto place = places.find(on);
    if (place == places.end()) return std::string();
    return place->second.file + ":" + std::to_string(place->second.line) + ":" +
           std::to_string(place->second.column);
  }

 private:
  const CheckedProduct* m_product;
  std::map<std::string, std::map<std::string, Place>> m_known;  // by plugin
};

std::size_t FindPlugin(const Timeline& timeline, const std::string& id, const std::string& bin) {
  if (timeline.plugins.empty()) {
    throw UsageError("there is no product with plugins in " + bin + "; --bin names its folder");
  }
  std::vector<std::string> ids;
  for (std::size_t i = 0; i < timeline.plugins.size(); ++i) {
    if (timeline.plugins[i].id == id) return i;
    ids.push_back(timeline.plugins[i].id);
  }
  for (const PluginRun& other : timeline.state.Plugins()) {
    if (other.head.id != id) continue;
    throw UsageError("\"" + Escaped(id) + "\" is not started by the frame: its kind is " +
                     other.head.kind);
  }
  throw UsageError("\"" + Escaped(id) + "\" is no plugin of this product" +
                   Escaped(DidYouMean(id, ids)));
}

ExitStatus Why(const Options& options, HostContext& context) {
  std::optional<RecordedRun> run = RunOf(options, context);
  const std::string bin = BinOf(options, run);
  const std::unique_ptr<CheckedProduct> product = ReadProductIn(bin, options.module, context);
  if (!run && product == nullptr) throw UsageError("--bin: " + bin + " is no folder");
  RecordedRun graph;  // of a product that has not run
  if (!run) graph.record.plugins = PluginHeads(product->model, bin + "/");
  const Timeline timeline = MakeTimeline(run ? std::move(*run) : std::move(graph));
  const std::size_t plugin = FindPlugin(timeline, options.why.plugin, bin);
  Declarations declarations(product.get());
  const DeclaredAt at = [&](const std::string& id, const std::string& on) {
    return declarations.At(id, on);
  };
  if (options.why.other.empty()) {
    WriteOutput(context, WhyText(timeline, plugin, at));
  } else {
    if (options.why.other == options.why.plugin) {
      throw UsageError("\"" + Escaped(options.why.other) + "\" is named twice");
    }
    const std::size_t other = FindPlugin(timeline, options.why.other, bin);
    WriteOutput(context, WhyBeforeText(timeline, plugin, other, at));
  }
  return kOk;
}

}  // namespace

Command WhyCommand() {
  return {"why", "Show why a plugin started when it did, or before another", &AddOptions, &Why};
}
