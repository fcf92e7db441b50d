#include <algorithm>
#include <string>

#include "workbench/check/PluginLists.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void AddBoth(const PluginEntry& driver, const PluginEntry& server, RuleFindings& findings) {
  const std::string& id = driver.description->id;
  RuleFinding finding;
  finding.place = PlaceOfID(driver);
  finding.message = Quoted(id) +
                    " is a driver here and also a server plugin: the frame starts it, and the "
                    "platform receives it as a driver too; remove the entry that is not meant";
  finding.related.push_back({PlaceOfID(server), "listed as a server plugin"});
  finding.plugin = id;
  finding.subject = "driver";
  findings.push_back(std::move(finding));
}

/// The first entry that lists it as a driver on purpose: TEV216 reports an addon's Category that is
/// neither "server" nor "dam_driver".
const PluginEntry* DriverEntry(const SameID& drivers) {
  const auto isDriver = [](const PluginEntry* entry) { return entry->type == "dam_driver"; };
  const auto found = std::find_if(drivers.entries.begin(), drivers.entries.end(), isDriver);
  return found == drivers.entries.end() ? nullptr : *found;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const PluginsByID plugins = GroupByID(product);
  for (const auto& [key, same] : plugins) {
    if (key.first != PluginList::kServers) continue;
    const auto drivers = plugins.find({PluginList::kDrivers, key.second});
    if (drivers == plugins.end()) continue;
    const PluginEntry* driver = DriverEntry(drivers->second);
    if (driver != nullptr) AddBoth(*driver, *same.entries.front(), findings);
  }
}

}  // namespace

TEV_RULE(DriverAsPlugin) = {
    "TEV211",
    Severity::kWarning,
    "A driver is listed as a server plugin too",
    "The frame starts the plugins that Product.xml and the addons list, and leaves those of "
    "DeviceDrivers.xml, and an addon's with a Category other than \"server\", to the platform. One "
    "in both lists is used by both: the frame calls its Init, and the platform receives it as a "
    "driver.",
    "<Plugin ID=\"camera.driver\"/> in Product.xml, and camera.driver in DeviceDrivers.xml",
    "List drivers in DeviceDrivers.xml only, an addon's with Category=\"dam_driver\".",
    &Check};
