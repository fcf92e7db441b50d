#include "workbench/check/DependentTypes.h"

#include <algorithm>
#include <cstddef>

std::vector<JudgedDependency> TypesThatOrderNothing(const CheckedProduct& product) {
  std::vector<JudgedDependency> found;
  for (const JudgedDependency& dependency : JudgedDependencies(product)) {
    const Dependency& on = *dependency.on;
    const bool isJudged = dependency.role == PluginRole::kLibrary && on.dependentType != 1 &&
                          !on.id.empty() && on.id != dependency.plugin->id;
    if (isJudged && !WaitsFor(product, dependency.plugin->id, on.id)) found.push_back(dependency);
  }
  return found;
}

bool IsPlainNumber(const std::string& text) {
  constexpr char kBlanks[] = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return false;
  std::string digits = text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
  if (digits.front() == '-' || digits.front() == '+') digits.erase(0, 1);
  return !digits.empty() && digits.size() < 10 &&
         std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
}
