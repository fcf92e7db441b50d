#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// The symbols that one file uses and one library should have: what one finding names.
using Group = std::tuple<std::string, std::string, bool>;

std::string Message(const Group& group, const std::vector<std::string>& names) {
  const auto& [user, library, isVersion] = group;
  const std::string it = names.size() == 1 ? "it" : "them";
  const std::string way = user.empty() ? "" : "needs " + user + ", which ";
  if (isVersion) {
    return way + "requires " + QuotedList(names) + " of " + library +
           ", which is older and does not have " + it;
  }
  if (!library.empty()) {
    return way + "imports " + QuotedList(names) + " from " + library + ", which does not export " +
           it;
  }
  return way + "uses " + QuotedList(names) + ", which no library has that is loaded with it";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    std::map<Group, std::vector<std::string>> groups;
    for (const MissingSymbol& symbol : library->missing) {
      groups[{symbol.user, symbol.library, symbol.isVersion}].push_back(symbol.name);
    }
    for (const auto& [group, names] : groups) {
      RuleFinding finding = LibraryFinding(id, *library, names.front());
      finding.message = Message(group, names) + ": " + LossOf(product, id, *library);
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(MissingSymbols) = {
    "TEV413",
    Severity::kError,
    "A library uses a symbol that no library has",
    "The frame has every symbol of a library bound when it is loaded. On Linux each must be "
    "defined "
    "by HUB, by a library that HUB needs, or by one that the plugin's library needs, directly or "
    "not; on Windows by the library from which it is imported. If one is missing, the library is "
    "not "
    "loaded and the plugin counts as failed. The same holds for a version that a library requires "
    "of another one: GLIBCXX_3.4.32 is missing where the compiler's library is older than the one "
    "with which the plugin was built. This is judged only when every needed library was found.",
    "a plugin that calls a function which the new libstore.so no longer has",
    "Link the plugin with the library that has the symbol, build it against the library that is "
    "shipped, or build it on the oldest system on which it must run.",
    &Check};
