#include "workbench/check/ProductChanges.h"

#include <map>
#include <set>
#include <utility>

#include "workbench/check/VersionNumbers.h"
#include "workbench/output/Text.h"

namespace {

struct Part {
  std::string kind;
  std::string version;
  std::string addon;

  std::string Shown() const { return addon.empty() ? version : version + " of the addon " + addon; }
};

using Parts = std::map<std::string, Part>;

Parts PartsOf(const ProductModel& model) {
  Parts parts;
  for (const auto& [kind, list] : {std::pair("plugin", &model.ServerPluginDescriptions),
                                   std::pair("program", &model.ExePluginDescriptions),
                                   std::pair("driver", &model.DriverPluginDescriptions)}) {
    for (const PluginDescription& plugin : *list) {
      parts.emplace(plugin.ID, Part{kind, plugin.Version, plugin.OwnerAddon});
    }
  }
  for (const SubPlatformEntry& subPlatform : model.SubPlatforms) {
    parts.emplace(subPlatform.ID, Part{"sub platform", subPlatform.Version, std::string()});
  }
  return parts;
}

std::vector<PluginChange> ComparePlugins(const Parts& before, const Parts& after) {
  std::map<std::string, PluginChange> changes;
  for (const auto& [id, part] : before) {
    const auto now = after.find(id);
    if (now == after.end()) {
      changes[id] = {id, part.kind, part.Shown(), std::string(), false};
    } else if (now->second.Shown() != part.Shown() || now->second.kind != part.kind) {
      const bool isLower = CompareVersions(now->second.version, part.version).value_or(0) < 0;
      changes[id] = {id, now->second.kind, part.Shown(), now->second.Shown(), isLower};
    }
  }
  for (const auto& [id, part] : after) {
    if (before.count(id) == 0) changes[id] = {id, part.kind, std::string(), part.Shown(), false};
  }
  std::vector<PluginChange> list;
  for (auto& [id, change] : changes) list.push_back(std::move(change));
  return list;
}

std::vector<OrderChange> CompareOrder(const StartGraph& before, const StartGraph& after) {
  std::vector<OrderChange> changes;
  for (const auto& [plugin, now] : after.dependsOn) {
    const auto earlier = before.dependsOn.find(plugin);
    if (earlier == before.dependsOn.end()) continue;
    std::map<std::string, int> waits;  // 1: only before, 2: only after, 3: both
    for (const std::string& other : earlier->second) waits[other] |= 1;
    for (const std::string& other : now) waits[other] |= 2;
    for (const auto& [other, when] : waits) {
      const bool inBoth = before.dependsOn.count(other) != 0 && after.dependsOn.count(other) != 0;
      if (when != 3 && inBoth) changes.push_back({plugin, other, when == 2});
    }
  }
  return changes;
}

std::string ProductText(const ProductModel& model) {
  return model.Product.empty() ? "a product without a name" : model.Product + " " + model.Version;
}

FrameAnswer AnswerOf(const CheckedProduct& product) {
  if (product.fromFrame) return FrameAnswer::kRead;
  return product.IsSlowForFrame() ? FrameAnswer::kNotAsked : FrameAnswer::kRefused;
}

/// Why nothing is compared because of this product, as a line; empty when it is no reason.
std::string AnswerText(FrameAnswer answer, const std::string& product,
                       const std::string& whenRefused) {
  if (answer == FrameAnswer::kRead) return std::string();
  if (answer == FrameAnswer::kRefused) {
    return "  the frame refuses the " + product + " product: " + whenRefused + "\n";
  }
  return "  what the frame makes of the " + product +
         " product is not known: one of its files has more than " +
         std::to_string(kMostElementsForFrame) + " elements\n";
}

std::string ChangeText(const PluginChange& change) {
  const std::string name = change.kind + " " + ShownID(change.id) + " ";
  if (change.before.empty()) return "  new      " + name + Escaped(change.after);
  if (change.after.empty()) return "  gone     " + name + Escaped(change.before);
  return std::string(change.isLower ? "  lower    " : "  changed  ") + name +
         Escaped(change.before) + " to " + Escaped(change.after);
}

}  // namespace

ProductChanges CompareProducts(const CheckedProduct& before, const CheckedProduct& after) {
  ProductChanges changes;
  changes.productBefore = ProductText(before.model);
  changes.productAfter = ProductText(after.model);
  changes.frameBefore = AnswerOf(before);
  changes.frameAfter = AnswerOf(after);
  if (!changes.AreKnown()) return changes;
  changes.plugins = ComparePlugins(PartsOf(before.model), PartsOf(after.model));
  changes.order = CompareOrder(before.graph, after.graph);
  return changes;
}

std::string ChangesText(const ProductChanges& changes) {
  std::string text = "From " + Escaped(changes.folder) + " (" + Escaped(changes.productBefore) +
                     ") to " + Escaped(changes.productAfter) + ":\n";
  if (!changes.AreKnown()) {
    return text +
           AnswerText(changes.frameBefore, "old",
                      "nothing of it starts, so there is nothing to compare") +
           AnswerText(changes.frameAfter, "new", "nothing starts");
  }
  for (const PluginChange& change : changes.plugins) text += ChangeText(change) + "\n";
  for (const OrderChange& change : changes.order) {
    text += "  order    " + Escaped(change.plugin) +
            (change.isNew ? " now waits" : " no longer waits") + " for " + Escaped(change.other) +
            "\n";
  }
  for (const auto& [key, count] : changes.mended) {
    text += "  mended   " + key.rule + (key.plugin.empty() ? "" : " " + key.plugin) +
            (key.subject.empty() || key.subject == key.plugin ? "" : " " + key.subject) + "\n";
  }
  const bool none = changes.plugins.empty() && changes.order.empty() && changes.mended.empty();
  if (none) text += "  no plugin, no order and no finding changes\n";
  return text;
}
