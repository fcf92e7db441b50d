#include "workbench/check/ProductChanges.h"

#include <map>
#include <set>
#include <utility>

#include "workbench/check/Addons.h"
#include "workbench/check/VersionNumbers.h"
#include "workbench/output/Text.h"

namespace {

constexpr std::size_t kLabelColumns = 10;  // "no longer" and a blank

struct Part {
  std::string kind;
  std::string version;
  std::string addon;
  bool isIncompatible = false;

  std::string Shown() const {
    return (version.empty() ? "(no version)" : version) +
           (addon.empty() ? "" : " of the addon " + addon) +
           (isIncompatible ? " (incompatible)" : "");
  }
};

using Parts = std::map<std::string, Part>;

Parts PluginsOf(const ProductModel& model) {
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

Parts AddonsOf(const CheckedProduct& product) {
  Parts parts;
  for (const auto& [id, addon] : InstalledModels(product)) {
    parts.emplace(id, Part{"addon", addon->Version, std::string(), !addon->InstalledCompatible});
  }
  return parts;
}

Parts ToolsOf(const CheckedProduct& product) {
  Parts parts;
  for (const ToolModel& tool : product.toolModels) {
    if (tool.Installed && !tool.ID.empty()) parts.emplace(tool.ID, Part{"tool", tool.Version, {}});
  }
  return parts;
}

PartChange Gone(const std::string& id, const Part& before) {
  PartChange change;
  change.id = id;
  change.kind = before.kind;
  change.before = before.Shown();
  return change;
}

PartChange New(const std::string& id, const Part& after) {
  PartChange change;
  change.id = id;
  change.kind = after.kind;
  change.after = after.Shown();
  return change;
}

PartChange Change(const std::string& id, const Part& before, const Part& after) {
  PartChange change = New(id, after);
  change.before = before.Shown();
  change.isLower = CompareVersions(after.version, before.version).value_or(0) < 0;
  if (before.kind != after.kind) change.otherKind = before.kind;
  return change;
}

/// The file in the folder of the executables; empty for a part without one.
std::string FileOf(const std::string& id, const Part& part) {
  if (id.empty() || part.kind == "addon" || part.kind == "tool") return std::string();
  return id + (part.kind == "program" ? ".exe" : ".dll");
}

/// What changes, by ID.
std::vector<PartChange> CompareParts(const Parts& before, const Parts& after,
                                     const DiffersBetween& differs) {
  std::map<std::string, PartChange> changes;
  for (const auto& [id, part] : before) {
    const auto now = after.find(id);
    if (now == after.end()) {
      changes[id] = Gone(id, part);
      continue;
    }
    PartChange change = Change(id, part, now->second);
    const bool isSame = change.before == change.after && change.otherKind.empty();
    const std::string file = FileOf(id, part);
    change.otherFile = isSame && !file.empty() && differs(file);
    if (!isSame || change.otherFile) changes[id] = std::move(change);
  }
  for (const auto& [id, part] : after) {
    if (before.count(id) == 0) changes[id] = New(id, part);
  }
  std::vector<PartChange> list;
  list.reserve(changes.size());
  for (auto& [id, change] : changes) list.push_back(std::move(change));
  return list;
}

/// The waits that begin or end. Only a plugin waits, but the other one may have become a program.
std::vector<OrderChange> CompareOrder(const StartGraph& before, const StartGraph& after,
                                      const Parts& partsBefore, const Parts& partsAfter) {
  std::vector<OrderChange> changes;
  for (const auto& [plugin, now] : after.dependsOn) {
    const auto earlier = before.dependsOn.find(plugin);
    if (earlier == before.dependsOn.end()) continue;
    std::map<std::string, int> waits;  // 1: only before, 2: only after, 3: both
    for (const std::string& other : earlier->second) waits[other] |= 1;
    for (const std::string& other : now) waits[other] |= 2;
    for (const auto& [other, when] : waits) {
      const bool inBoth = partsBefore.count(other) != 0 && partsAfter.count(other) != 0;
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
  return product.HoldsUpFrame() ? FrameAnswer::kNotAsked : FrameAnswer::kRefused;
}

/// Why nothing is compared because of this product, as a line; empty when it is no reason.
std::string AnswerText(FrameAnswer answer, const std::string& product,
                       const std::string& whenRefused) {
  if (answer == FrameAnswer::kRead) return std::string();
  if (answer == FrameAnswer::kRefused) {
    return "  the frame refuses the " + product + " product: " + whenRefused + "\n";
  }
  return "  what the frame makes of the " + product +
         " product is not known: one of its files is a pipe, or has more than " +
         std::to_string(kMostElementsForFrame) + " elements\n";
}

std::string Line(const std::string& what, const std::string& text) {
  return "  " + PadRight(what, kLabelColumns) + text + "\n";
}

std::string ChangeText(const PartChange& change) {
  const std::string name = change.kind + " " + ShownID(change.id) + " ";
  if (change.before.empty()) return Line("new", name + Escaped(change.after));
  if (change.after.empty()) return Line("gone", name + Escaped(change.before));
  if (change.otherFile) {
    return Line("changed", name + Escaped(change.after) + ": its " +
                               (change.kind == "program" ? "program" : "library") +
                               " has other content, and the same version");
  }
  std::string text = (change.otherKind.empty() ? name : ShownID(change.id) + " ");
  text += Escaped(change.before);
  if (change.after != change.before) text += " to " + Escaped(change.after);
  if (!change.otherKind.empty()) text += ", from " + change.otherKind + " to " + change.kind;
  return Line(change.isLower ? "lower" : "changed", text);
}

/// The IDs, escaped, of what is gone.
std::set<std::string> Gone(const ProductChanges& changes) {
  std::set<std::string> gone;
  for (const std::vector<PartChange>* list : {&changes.addons, &changes.plugins}) {
    for (const PartChange& change : *list) {
      if (change.after.empty()) gone.insert(Escaped(change.id));
    }
  }
  return gone;
}

/// Findings that are gone: mended, or only no longer to be made.
std::string MendedText(const ProductChanges& changes) {
  const std::set<std::string> gone = Gone(changes);
  std::string text;
  for (const auto& [key, count] : changes.mended) {
    const Rule* rule = FindRule(key.rule);
    const bool isNote = rule != nullptr && rule->severity == Severity::kNote;
    text += Line(isNote || gone.count(key.plugin) != 0 ? "no longer" : "mended",
                 key.rule + (key.plugin.empty() ? "" : " " + key.plugin) +
                     (key.subject.empty() || key.subject == key.plugin ? "" : " " + key.subject));
  }
  return text;
}

}  // namespace

ProductChanges CompareProducts(const CheckedProduct& before, const CheckedProduct& after,
                               const DiffersBetween& differs) {
  ProductChanges changes;
  changes.productBefore = ProductText(before.model);
  changes.productAfter = ProductText(after.model);
  changes.frameBefore = AnswerOf(before);
  changes.frameAfter = AnswerOf(after);
  if (!changes.AreKnown()) return changes;
  changes.addons = CompareParts(AddonsOf(before), AddonsOf(after), differs);
  for (PartChange& tool : CompareParts(ToolsOf(before), ToolsOf(after), differs)) {
    changes.addons.push_back(std::move(tool));
  }
  const Parts pluginsBefore = PluginsOf(before.model);
  const Parts pluginsAfter = PluginsOf(after.model);
  changes.plugins = CompareParts(pluginsBefore, pluginsAfter, differs);
  changes.order = CompareOrder(before.graph, after.graph, pluginsBefore, pluginsAfter);
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
  for (const PartChange& change : changes.addons) text += ChangeText(change);
  for (const PartChange& change : changes.plugins) text += ChangeText(change);
  for (const OrderChange& change : changes.order) {
    text +=
        Line("order", Escaped(change.plugin) + (change.isNew ? " now waits" : " no longer waits") +
                          " for " + Escaped(change.other));
  }
  const bool none = changes.addons.empty() && changes.plugins.empty() && changes.order.empty();
  if (none) text += "  no addon, no plugin, no library and no order changes\n";
  return text + MendedText(changes);
}
