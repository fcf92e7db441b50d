#include "workbench/check/DependencyTarget.h"

#include <algorithm>

#include "workbench/check/JudgedDependency.h"
#include "workbench/output/Nearest.h"

namespace {

bool ListsPlugins(FileKind kind) {
  return kind == FileKind::kProduct || kind == FileKind::kDrivers || kind == FileKind::kAddon;
}

/// Whether the frame learns from the file which plugins there are, directly or not.
bool LeadsToPlugins(FileKind kind) {
  return ListsPlugins(kind) || kind == FileKind::kInstalled || kind == FileKind::kAddonList;
}

}  // namespace

DependencyTarget DependencyTargets::Find(const std::string& id) {
  if (m_product.Starts(id)) return {TargetKind::kStarted, nullptr, nullptr, nullptr};
  Index();
  if (m_executables.count(id) != 0) return {TargetKind::kExecutable, nullptr, nullptr, nullptr};
  if (m_drivers.count(id) != 0) return {TargetKind::kDriver, nullptr, nullptr, nullptr};
  DependencyTarget target = Dropped(id);
  if (target.kind == TargetKind::kUnknown) target = Listed(id);
  if (target.kind == TargetKind::kUnknown) target = Other(id);
  return target;
}

void DependencyTargets::Index() {
  if (m_indexed) return;
  m_indexed = true;
  for (const PluginDescription& plugin : m_product.model.ExePluginDescriptions) {
    m_executables.insert(plugin.ID);
  }
  for (const PluginDescription& plugin : m_product.model.DriverPluginDescriptions) {
    m_drivers.insert(plugin.ID);
  }
  for (const Description& description : m_product.descriptions) {
    m_descriptions.emplace(description.id, &description);
  }
  for (const PluginEntry& entry : m_product.entries) m_entries.emplace(entry.id, &entry);
  IndexLists();
}

void DependencyTargets::IndexLists() {
  for (const InstalledEntry& addon : m_product.addons) m_addons.emplace(addon.id, &addon);
  for (const CatalogueEntry& addon : m_product.offeredAddons) m_offeredAddons.insert(addon.id);
  for (const InstalledEntry& tool : m_product.tools) m_tools.insert(tool.id);
  for (const CatalogueEntry& tool : m_product.offeredTools) m_tools.insert(tool.id);
  m_platform = PlatformOf(m_product).id;
  for (const CheckedFile& file : m_product.files) {
    const bool isLost = !file.HasContent() && (!file.missing || !file.readName.empty());
    if (LeadsToPlugins(file.kind) && isLost) m_allListsRead = false;
    if (ListsPlugins(file.kind)) CollectTexts(file.tree.root);
  }
}

void DependencyTargets::CollectTexts(const XmlNode& node) {
  m_texts.insert(node.text);
  for (const XmlAttribute& attribute : node.attributes) m_texts.insert(attribute.value);
  for (const XmlNode& child : node.children) CollectTexts(child);
}

bool DependencyTargets::IsOffered(const PluginEntry& entry) const {
  return entry.addon == nullptr || m_product.Merges(*entry.addon);
}

/// The kind of what an entry lists that the frame does not add to the product. When the frame
/// refuses the whole product, nothing is known of its addons.
TargetKind DependencyTargets::UnlessOffered(const PluginEntry& entry) const {
  const bool isOfAddon = !IsOffered(entry) && m_product.fromFrame;
  return isOfAddon ? TargetKind::kOfAddon : TargetKind::kUnread;
}

/// A description that has the ID and is not kept.
DependencyTarget DependencyTargets::Dropped(const std::string& id) const {
  const auto [first, last] = m_descriptions.equal_range(id);
  for (auto at = first; at != last; ++at) {
    const Description& description = *at->second;
    for (const PluginEntry* entry : description.entries) {
      if (!IsOffered(*entry)) continue;
      const bool isTrimmed =
          m_product.runningModule == kDistributedModule && !description.isDistributed;
      const bool hasType =
          description.type == PluginType::kExecutable || description.type == PluginType::kLibrary;
      if (!hasType) return {TargetKind::kWrongType, entry, &description, nullptr};
      if (isTrimmed) return {TargetKind::kTrimmed, entry, &description, nullptr};
    }
  }
  if (first == last || first->second->entries.empty()) return {};
  const PluginEntry* entry = first->second->entries.front();
  return {UnlessOffered(*entry), entry, first->second, entry->addon};
}

/// An entry that has the ID, with a description that has not.
DependencyTarget DependencyTargets::Listed(const std::string& id) const {
  const auto found = m_entries.find(id);
  if (id.empty() || found == m_entries.end()) return {};
  const PluginEntry& entry = *found->second;
  DependencyTarget target = {TargetKind::kUnread, &entry, entry.description, entry.addon};
  if (entry.description == nullptr) return target;
  target.kind = UnlessOffered(entry);
  if (!IsOffered(entry)) return target;
  if (!entry.descriptionFile->HasContent()) {
    target.kind = TargetKind::kEmpty;
  } else if (entry.description->id.empty()) {
    target.kind = TargetKind::kWithoutID;
  } else if (m_product.Starts(entry.description->id)) {
    target.kind = TargetKind::kOtherID;
  }
  return target;
}

/// An ID that no entry and no description that is listed has.
DependencyTarget DependencyTargets::Other(const std::string& id) const {
  if (id.empty()) return {};
  if (id == m_platform) return {TargetKind::kPlatform, nullptr, nullptr, nullptr};
  const auto addon = m_addons.find(id);
  if (addon != m_addons.end()) return {TargetKind::kAddon, nullptr, nullptr, addon->second};
  if (m_offeredAddons.count(id) != 0) return {TargetKind::kAddon, nullptr, nullptr, nullptr};
  if (m_tools.count(id) != 0) return {TargetKind::kTool, nullptr, nullptr, nullptr};
  if (m_texts.count(id) != 0) return {TargetKind::kUnread, nullptr, nullptr, nullptr};
  const std::string file = m_product.bin + "/META_INFO/" + id + "/" + id;
  if (!m_product.Exists(file + ".xml") && !m_product.Exists(file + ".data")) return {};
  // An entry whose ID is misspelt has no description, and this one lies beside it.
  const bool isMisspelt = std::any_of(
      m_product.entries.begin(), m_product.entries.end(), [&](const PluginEntry& entry) {
        return entry.description == nullptr && !Nearest(entry.id, {id}).empty();
      });
  const bool isUnread = isMisspelt || !m_allListsRead;
  return {isUnread ? TargetKind::kUnread : TargetKind::kDescribedOnly, nullptr, nullptr, nullptr};
}
