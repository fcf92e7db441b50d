#include "workbench/report/BudgetFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "workbench/output/Text.h"
#include "workbench/report/Times.h"

namespace {

using Json = nlohmann::ordered_json;
using Kind = BudgetItem::Kind;

constexpr double kMostMs = 1e9;  // eleven days

constexpr std::initializer_list<const char*> kPhases = {
    RunPhase::kFrameInit, RunPhase::kPlatformStart, RunPhase::kStart,      RunPhase::kFrameStop,
    RunPhase::kStop,      RunPhase::kPlatformStop,  RunPhase::kFrameUnInit};

BudgetItem MakeItem(Kind kind, const std::string& name, const Json& ms) {
  const bool good = ms.is_number() && ms.get<double>() >= 0 && ms.get<double>() <= kMostMs;
  if (!good) {
    throw std::runtime_error("the budget of \"" + Escaped(name) +
                             "\" is no number of milliseconds from 0 up: " + Escaped(ms.dump()));
  }
  return {kind, name, std::llround(ms.get<double>() * 1e6)};
}

const Json& Object(const Json& json, const std::string& name) {
  if (!json.is_object()) throw std::runtime_error(name + " is no object of names and milliseconds");
  return json;
}

std::string NameOf(const BudgetItem& item) {
  return item.kind == Kind::kUp ? "up" : ShownID(item.name);
}

}  // namespace

std::vector<BudgetItem> ReadBudget(const std::string& text) {
  const Json json = Json::parse(text, nullptr, false);
  if (json.is_discarded()) throw std::runtime_error("it is no JSON");
  std::vector<BudgetItem> budget;
  for (const auto& [name, value] : Object(json, "it").items()) {
    if (name == "up") {
      budget.push_back(MakeItem(Kind::kUp, name, value));
    } else if (name == "phases") {
      for (const auto& [phase, ms] : Object(value, "\"phases\"").items()) {
        if (std::find(kPhases.begin(), kPhases.end(), phase) == kPhases.end()) {
          throw std::runtime_error("no phase is named \"" + Escaped(phase) +
                                   "\"; there are frame-init, platform-start, start, frame-stop, "
                                   "stop, platform-stop and frame-uninit");
        }
        budget.push_back(MakeItem(Kind::kPhase, phase, ms));
      }
    } else if (name == "plugins") {
      for (const auto& [id, ms] : Object(value, "\"plugins\"").items()) {
        budget.push_back(MakeItem(Kind::kPlugin, id, ms));
      }
    } else {
      throw std::runtime_error("\"" + Escaped(name) +
                               "\" is no member of a budget; there are up, phases and plugins");
    }
  }
  if (budget.empty())
    throw std::runtime_error("it names nothing; there are up, phases and plugins");
  return budget;
}

std::string BudgetText(const std::vector<BudgetResult>& results, std::int64_t resolution) {
  std::string text;
  std::size_t exceeded = 0;
  for (const BudgetResult& result : results) {
    if (!result.exceeded) continue;
    ++exceeded;
    const std::string most = MsText(result.item.most, resolution);
    if (result.taken == kUnknown) {
      text += fmt::format("{}: not measured, budget {} ms\n", NameOf(result.item), most);
    } else {
      text += fmt::format("{}: {} ms, budget {} ms, exceeded by {} ms\n", NameOf(result.item),
                          MsText(result.taken, resolution), most,
                          MsText(result.taken - result.item.most, resolution));
    }
  }
  return text +
         fmt::format("{} of {} kept\n", results.size() - exceeded, Count(results.size(), "budget"));
}
