#include "workbench/check/DroppedPlugin.h"

#include "workbench/check/Words.h"

namespace {

std::string WhyKept(const PluginEntry& winner, const PluginEntry& loser) {
  const std::string& version = winner.description->version;
  const std::string& other = loser.description->version;
  if (version == other) {
    return "both have the version " + Quoted(version) + " and that one is read first";
  }
  return "its version " + Quoted(version) + " is greater, as text, than " + Quoted(other);
}

}  // namespace

RuleFinding DroppedFinding(const PluginEntry& winner, const PluginEntry& loser) {
  const Description& description = *loser.description;
  RuleFinding finding;
  finding.place = PlaceAt(*description.file, "ID");
  finding.message = "two plugins have the ID " + Quoted(description.id) +
                    ": the frame drops this one and keeps that of " +
                    winner.description->file->readName + ", since " + WhyKept(winner, loser);
  finding.related.push_back({PlaceAt(*winner.description->file, "ID"), "this one is kept"});
  finding.plugin = description.id;
  finding.subject = description.folder;
  return finding;
}
