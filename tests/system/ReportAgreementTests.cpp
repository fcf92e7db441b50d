// Every form of the report says of each plugin what the table at the end of the run said: result,
// time and reason of start and stop. On random products.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"

namespace {

/// What became of a plugin: "failed, 3 ms; ok, 0 ms; its Init returned false".
struct Outcome {
  std::string start;
  std::string startMs;  // empty: no time
  std::string stop;
  std::string stopMs;
  std::string reason;

  std::string Text() const {
    return start + ", " + startMs + "; " + stop + ", " + stopMs + "; " + reason;
  }
};

using Outcomes = std::map<std::string, std::string>;  // by plugin: its outcome as a text

std::string Word(const std::string& shown) {
  static const std::map<std::string, std::string> words = {{"started", "ok"},
                                                           {"INIT FAILED", "failed"},
                                                           {"NOT LOADED", "not-loaded"},
                                                           {"stopped", "ok"},
                                                           {"STOP REFUSED", "refused"},
                                                           {"-", "nothing-to-stop"},
                                                           {"", "ok"},
                                                           {"failed", "failed"},
                                                           {"refused", "refused"},
                                                           {"not loaded", "not-loaded"},
                                                           {"nothing", "nothing-to-stop"},
                                                           {"nothing to stop", "nothing-to-stop"}};
  const auto word = words.find(shown);
  return word == words.end() ? shown : word->second;
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

Outcomes OutcomesInTable(const std::string& printed) {
  const std::regex row(R"((\S+\.server) +(started|INIT FAILED|NOT LOADED) +(?:(\d+) ms)? +)"
                       R"((stopped|STOP REFUSED|-)(?: +(\d+) ms)? *(.*))");
  Outcomes outcomes;
  for (const std::string& line : LinesOf(printed)) {
    std::smatch cells;
    if (!std::regex_match(line, cells, row)) continue;
    outcomes[cells[1]] =
        Outcome{Word(cells[2]), cells[3], Word(cells[4]), cells[5], cells[6]}.Text();
  }
  return outcomes;
}

std::string MsIn(const nlohmann::json& entry) {
  const auto ms = entry.find("ms");
  return ms == entry.end() || ms->is_null() ? "" : std::to_string(ms->get<std::int64_t>());
}

Outcomes OutcomesInJson(const std::string& report) {
  Outcomes outcomes;
  const nlohmann::json json = nlohmann::json::parse(report);
  for (const nlohmann::json& plugin : json["plugins"]) {
    const auto reason = [&](const char* name) {
      return plugin.contains(name) && plugin[name].is_string() ? plugin[name].get<std::string>()
                                                               : "";
    };
    outcomes[plugin["id"]] =
        Outcome{plugin["start"]["result"], MsIn(plugin["start"]), plugin["stop"]["result"],
                MsIn(plugin["stop"]), reason("reason") + reason("stopReason")}
            .Text();
  }
  return outcomes;
}

Outcomes OutcomesInTrace(const std::string& trace) {
  std::map<std::string, Outcome> outcomes;
  const nlohmann::json json = nlohmann::json::parse(trace);
  for (const nlohmann::json& event : json["traceEvents"]) {
    const bool isTask = event["ph"] == "B" && event.contains("args") &&
                        event["args"].contains("result") && event["args"].contains("plugin");
    if (!isTask) continue;
    const nlohmann::json& args = event["args"];
    Outcome& outcome = outcomes[args["plugin"]];
    const bool isStart = args["phase"] == "start";
    (isStart ? outcome.start : outcome.stop) = args["result"];
    (isStart ? outcome.startMs : outcome.stopMs) = MsIn(args);
    if (args.contains("reason")) outcome.reason = args["reason"];  // also on the critical path
  }
  Outcomes texts;
  for (const auto& [id, outcome] : outcomes) texts[id] = outcome.Text();
  return texts;
}

/// The texts of a row's cells, from the last.
std::vector<std::string> CellsFromTheEnd(const std::string& row) {
  std::vector<std::string> cells;
  std::size_t end = row.size();
  for (std::size_t at = row.rfind("<td>"); at != std::string::npos;
       at = row.rfind("<td>", at - 1)) {
    cells.push_back(row.substr(at + 4, end - at - 4));
    if (cells.back() == "\u2013") cells.back().clear();
    end = at;
  }
  return cells;
}

Outcomes OutcomesInPage(const std::string& page) {
  const std::regex row(R"(<tr id=(start|stop)-\d+ data-r=(\S+).*<bdi>(.*?)</bdi>.*)");
  std::map<std::string, Outcome> outcomes;
  for (const std::string& line : LinesOf(page)) {
    if (line.compare(0, 8, "<tr id=s") != 0) continue;
    std::smatch parts;
    const std::string head = line.substr(0, line.find("</bdi>") + 6);
    if (!std::regex_match(head, parts, row)) continue;
    const std::vector<std::string> cells = CellsFromTheEnd(line);
    Outcome& outcome = outcomes[parts[3]];
    if (parts[1] == "start") {
      outcome.start = Word(parts[2]);
      outcome.startMs = cells[2];
    } else {
      outcome.stop = Word(parts[2]);
      outcome.stopMs = cells[3];
    }
    outcome.reason += cells[0];
  }
  Outcomes texts;
  for (const auto& [id, outcome] : outcomes) texts[id] = outcome.Text();
  return texts;
}

Outcomes OutcomesInGraph(const std::string& graph) {
  const std::regex node(
      R"re(.*<B>(.*)</B><BR/>.*start [\d.]+ ms(?:, Init (\d+) ms)?(?:: ([a-z ]+))?<BR/>)re"
      R"re(stop [\d.]+ ms(?:, UnInit (\d+) ms)?(?:: ([a-z ]+))?</FONT>.*)re");
  const std::regex reason(R"(\\n  ([^\\"]*(?:returned false|threw|is no library)[^\\"]*))");
  Outcomes outcomes;
  for (const std::string& line : LinesOf(graph)) {
    std::smatch parts;
    if (!std::regex_match(line, parts, node)) continue;
    std::smatch why;
    std::regex_search(line, why, reason);
    outcomes[parts[1]] = Outcome{Word(parts[3]), parts[2], Word(parts[5]), parts[4], why[1]}.Text();
  }
  return outcomes;
}

/// The lines of the failures, as the text has them.
std::vector<std::string> FailuresInText(const std::string& text) {
  std::vector<std::string> failures;
  bool isFailure = false;
  for (const std::string& line : LinesOf(text)) {
    isFailure = line == "Failures" || (isFailure && line.compare(0, 2, "  ") == 0);
    if (isFailure && line != "Failures") failures.push_back(line.substr(2));
  }
  std::sort(failures.begin(), failures.end());
  return failures;
}

/// The same, as they follow from the table.
std::vector<std::string> FailuresOf(const Outcomes& table) {
  const std::regex outcome("([a-z-]+), .*; ([a-z-]+), .*; (.*)");
  std::vector<std::string> failures;
  for (const auto& [id, text] : table) {
    std::smatch parts;
    if (!std::regex_match(text, parts, outcome) || parts[3].length() == 0) continue;
    const std::string what = parts[1] == "failed"       ? "INIT FAILED"
                             : parts[1] == "not-loaded" ? "NOT LOADED"
                                                        : "STOP REFUSED";
    failures.push_back(id);
    failures.back() += ": " + what + ": " + parts[3].str();
  }
  return failures;
}

class RandomRun : public testing::TestWithParam<unsigned> {};

TEST_P(RandomRun, IsReportedAsItsTableSaysInEveryFormat) {
  constexpr std::size_t count = 10;
  std::mt19937 random(GetParam());
  const std::vector<std::string> fixtures = {"well_behaved", "well_behaved",   "init_fails",
                                             "init_throws",  "uninit_refuses", "uninit_throws"};
  MadeProduct product;
  for (std::size_t i = 0; i < count; ++i) {
    std::string others;
    for (std::size_t j = 0; j < i; ++j) {
      if (random() % 4 == 0) others += "p" + std::to_string(j) + ".server ";
    }
    const std::string id = "p" + std::to_string(i) + ".server";
    product.Plugin(id, fixtures[random() % fixtures.size()],
                   others.empty() ? "" : DependsOn(others.substr(0, others.size() - 1)));
  }
  product.BrokenLibrary("broken.server", "no library");
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  const std::string printed = product.RunUntilUp("--all", settings).output;
  const Outcomes table = OutcomesInTable(printed);
  ASSERT_EQ(count + 1, table.size()) << printed;
  const auto report = [&](const std::string& format) {
    return RunHub("report \"" + LocalFromPath(settings.record) + "\" --format " + format).output;
  };
  EXPECT_EQ(table, OutcomesInJson(report("json")));
  EXPECT_EQ(table, OutcomesInTrace(report("trace")));
  EXPECT_EQ(table, OutcomesInPage(report("html")));
  EXPECT_EQ(table, OutcomesInGraph(report("dot")));
  EXPECT_EQ(FailuresOf(table), FailuresInText(report("text")));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomRun, testing::Range(1U, 7U));

}  // namespace
