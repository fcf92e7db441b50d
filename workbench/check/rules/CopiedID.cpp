#include <string>
#include <utility>

#include "workbench/check/DroppedPlugin.h"
#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// What was probably meant.
std::string Meant(const PluginEntry& winner, const PluginEntry& loser) {
  const std::string& id = loser.description->id;
  if ((loser.id == id) == (winner.id == id)) return std::string();
  const PluginEntry& copy = loser.id == id ? winner : loser;
  return "; the <ID> in " + copy.description->file->readName + " was probably meant to be " +
         Quoted(copy.id);
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [key, same] : GroupByID(product)) {
    for (const PluginEntry* loser : Losers(same)) {
      if (WinOver(*same.winner, *loser) != Win::kOfOneOwner) continue;
      RuleFinding finding = DroppedFinding(*same.winner, *loser);
      finding.message += Meant(*same.winner, *loser);
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(CopiedID) = {
    "TEV221",
    Severity::kError,
    "Two plugins of the product, or of one addon, have one ID",
    "Two entries of a list name different descriptions, but these have the same <ID>. Of plugins "
    "with one ID the frame keeps the one whose version is the greatest text, and of equal ones the "
    "one that is read first. The other one never starts, without a message. Often its description "
    "is a copy in which the <ID> was not changed.",
    "META_INFO/backup.server/backup.server.xml, copied from alarm.server.xml with its <ID>",
    "Give each plugin an ID of its own, or remove one of the two.",
    &Check};
