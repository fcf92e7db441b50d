#include <string>

#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/LetterCase.h"
#include "workbench/output/Nearest.h"

namespace {

constexpr char kServer[] = "server";
constexpr char kDriver[] = "dam_driver";

std::string Meant(const std::string& category) {
  const bool isDriver = Lowered(category).find("driver") != std::string::npos;
  const std::string nearest = isDriver ? kDriver : Nearest(category, {kServer, kDriver});
  if (!nearest.empty()) return "; did you mean " + Quoted(nearest) + "?";
  return "; a server plugin or program has " + Quoted(kServer) + ", a driver " + Quoted(kDriver);
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const PluginEntry& entry : product.entries) {
    const bool isJudged = entry.addon != nullptr && entry.node != nullptr && !entry.id.empty();
    if (!isJudged || entry.type == kServer || entry.type == kDriver) continue;
    RuleFinding finding;
    finding.place = PlaceOf(*entry.file, *entry.node, "Category");
    finding.message =
        (entry.type.empty() ? Quoted(entry.id) + " has no Category"
                            : "the Category of " + Quoted(entry.id) + " is " + Quoted(entry.type)) +
        ": the frame takes it for a driver and does not start it" + Meant(entry.type);
    finding.plugin = entry.id;
    finding.subject = entry.addon->id;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(AddonCategory) = {
    "TEV216",
    Severity::kWarning,
    R"(The Category of an addon's plugin is neither "server" nor "dam_driver")",
    "Only an addon's plugins with Category=\"server\", in exactly these letters, are started, as "
    "libraries or programs by their type. The frame hands all others over to the platform as "
    "drivers, whatever their type, and does not start them.",
    R"(<Plugin ID="parking.server" Version="1.4.0" Category="Server"/>)",
    R"(Write Category="server", or "dam_driver" for a driver.)",
    &Check};
