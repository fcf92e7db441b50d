#include <algorithm>
#include <cstdint>

#include "workbench/output/Text.h"
#include "workbench/replay/RunHarm.h"

namespace {

constexpr std::size_t kMostNames = 5;
constexpr std::size_t kWidestID = 40;

std::string Names(const std::vector<std::size_t>& plugins, const Timeline& timeline) {
  std::vector<std::string> ids;
  ids.reserve(plugins.size());
  for (const std::size_t plugin : plugins) ids.push_back(timeline.plugins[plugin].id);
  return JoinNames(ids, kMostNames);
}

/// "2 plugins never start: a and b"
std::string Group(const std::vector<std::size_t>& plugins, const Timeline& timeline,
                  const char* one, const char* several) {
  return "; " + Count(plugins.size(), "plugin") + " " + (plugins.size() == 1 ? one : several) +
         ": " + Names(plugins, timeline);
}

std::string Milliseconds(std::int64_t milliseconds) {
  return std::to_string(milliseconds) + " ms";
}

std::string UpText(const RunHarm& harm) {
  if (harm.crashed) return "the process crashes";
  if (harm.up == kUnknown) return "never up";
  std::string up = "up after " + Milliseconds(harm.up);
  if (harm.upLater == 0) return up;
  return up + " (" + (harm.upLater > 0 ? "+" : "") + std::to_string(harm.upLater) + ")";
}

std::string LaterText(const RunHarm& harm, const Timeline& timeline) {
  std::vector<std::size_t> plugins;
  for (const RunHarm::Later& later : harm.later) plugins.push_back(later.plugin);
  return Group(plugins, timeline, "starts later", "start later") + ", by " +
         (plugins.size() == 1 ? "" : "at most ") + Milliseconds(harm.later.front().milliseconds);
}

struct Column {
  const char* head;
  std::size_t (*number)(const RunHarm& harm);
};

constexpr Column kColumns[] = {
    {"Behind it", [](const RunHarm& harm) { return harm.dependents.size(); }},
    {"Never start", [](const RunHarm& harm) { return harm.neverBegun.size(); }},
    {"Fail", [](const RunHarm& harm) { return harm.failed.size(); }},
    {"Start anyway", [](const RunHarm& harm) { return harm.begunAnyway.size(); }},
    {"Start later", [](const RunHarm& harm) { return harm.later.size(); }}};

/// The columns that have a number other than 0.
std::vector<Column> UsedColumns(const std::vector<RunHarm>& harms) {
  std::vector<Column> used;
  for (const Column& column : kColumns) {
    const auto has = [&column](const RunHarm& harm) { return column.number(harm) != 0; };
    if (std::any_of(harms.begin(), harms.end(), has)) used.push_back(column);
  }
  return used;
}

std::string Number(std::size_t number) {
  return number == 0 ? "-" : std::to_string(number);
}

}  // namespace

std::string HarmSentence(const RunHarm& harm, const Timeline& without, const std::string& does) {
  std::string text = ShownID(without.plugins[harm.plugin].id) + " " + does + ": " + UpText(harm);
  if (!harm.neverBegun.empty()) {
    text += Group(harm.neverBegun, without, "never starts", "never start");
  }
  if (!harm.failed.empty()) text += Group(harm.failed, without, "fails", "fail");
  if (!harm.begunAnyway.empty()) {
    text +=
        Group(harm.begunAnyway, without, "starts although it failed", "start although it failed");
  }
  if (!harm.later.empty()) text += LaterText(harm, without);
  if (harm.stopHung) text += "; the stop hangs";
  return text + "; " + harm.end;
}

std::string HarmTable(const std::vector<RunHarm>& harms, const Timeline& without) {
  std::size_t width = Columns("Plugin");
  for (const RunHarm& harm : harms) {
    width = std::max(width, Columns(ShownID(without.plugins[harm.plugin].id)));
  }
  width = std::min(width, kWidestID);
  const std::vector<Column> columns = UsedColumns(harms);
  std::string table = PadRight("Plugin", width);
  for (const Column& column : columns) table += std::string("  ") + column.head;
  table += "  Up\n";
  for (const RunHarm& harm : harms) {
    table += PadRight(CutToColumns(ShownID(without.plugins[harm.plugin].id), width), width);
    for (const Column& column : columns) {
      table += "  " + PadLeft(Number(column.number(harm)), Columns(column.head));
    }
    table += "  " + UpText(harm) + "\n";
  }
  return table;
}
