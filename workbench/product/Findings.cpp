#include "workbench/product/Findings.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "workbench/product/StartGraph.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostNames = 5;  // of plugins, before "and N more"

std::string Shown(const std::string& id) {
  return id.empty() ? "(no ID)" : id;
}

/// "x, y and z"; of more than five, the first five "and N more".
std::string NameList(const std::vector<std::string>& ids) {
  std::string text;
  const std::size_t shown = std::min(ids.size(), kMostNames);
  for (std::size_t i = 0; i < shown; ++i) {
    const bool last = i > 0 && i + 1 == ids.size();
    text += (i == 0 ? "" : last ? " and " : ", ") + Shown(ids[i]);
  }
  if (shown < ids.size()) text += " and " + std::to_string(ids.size() - shown) + " more";
  return text;
}

/// "a depends on b: PATH:LINE; b depends on a: PATH:LINE", as far as the lines are known.
std::string DeclarationText(const std::vector<std::string>& cycle, const DependencyLines& lines,
                            const LocalNames& names) {
  std::string text;
  const std::size_t shown = std::min(cycle.size(), 2 * kMostNames);
  for (std::size_t i = 0; i < shown; ++i) {
    const std::string& other = cycle[(i + 1) % cycle.size()];
    const auto line = lines.find({cycle[i], other});
    text += (i == 0 ? "" : "; ") + Shown(cycle[i]) + " depends on " + Shown(other);
    if (line == lines.end()) continue;
    text += ": " + names.fromPath(line->second.file) + ":" + std::to_string(line->second.line);
  }
  if (shown < cycle.size()) text += "; and " + std::to_string(cycle.size() - shown) + " more";
  return text;
}

std::string WaitingText(const std::vector<std::string>& behind, bool oneMember) {
  if (behind.empty()) return std::string();
  const bool one = behind.size() == 1;
  return "; " + std::to_string(behind.size()) + (one ? " other waits" : " others wait") +
         " behind " + (oneMember ? "it: " : "them: ") + NameList(behind);
}

std::string CycleFinding(const StartGraph& graph, const std::vector<std::string>& cycle,
                         const DependencyLines& lines, const LocalNames& names) {
  const bool alone = cycle.size() == 1;
  return CycleText(cycle) +
         (alone ? ": it waits for itself for ever (" : ": these wait for each other for ever (") +
         DeclarationText(cycle, lines, names) + ")" +
         WaitingText(WaitingBehind(graph, cycle), alone);
}

std::string NamelessFinding(const ModelFileEntry& entry, const LocalNames& names) {
  const std::string text = EntryWithoutID(entry, names);
  const std::string never = "its stop is never counted, so that the stop never ends by itself";
  if (!entry.hidden) return text + ": it has no library, and " + never;
  return text + "; till then there is a sub platform without an ID: " + never;
}

}  // namespace

std::vector<Finding> FindingsBeforeStart(const fs::path& bin, const ProductModel& model,
                                         const LocalNames& names) {
  const StartGraph graph = MakeStartGraph(model);
  const auto cycles = FindCycles(graph);
  const bool nameless =
      std::any_of(model.SubPlatforms.begin(), model.SubPlatforms.end(),
                  [](const SubPlatformEntry& subPlatform) { return subPlatform.ID.empty(); });
  if (cycles.empty() && !nameless) return {};

  const std::vector<ModelFile> files = ReadModelFiles(bin, names);
  const DependencyLines lines = cycles.empty() ? DependencyLines() : ReadDependencyLines(files);
  std::vector<Finding> findings;
  findings.reserve(cycles.size());
  for (const auto& cycle : cycles) {
    findings.push_back({Severity::kError, CycleFinding(graph, cycle, lines, names)});
  }
  if (nameless) {
    for (const ModelFileEntry& entry : SubPlatformsWithoutID(files)) {
      std::string text = NamelessFinding(entry, names);
      // All entries hidden by a second section have the same sentence.
      if (findings.empty() || findings.back().text != text) {
        findings.push_back({Severity::kError, std::move(text)});
      }
    }
  }
  return findings;
}
