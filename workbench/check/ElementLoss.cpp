#include "workbench/check/ElementLoss.h"

#include <algorithm>
#include <cstring>

#include "workbench/check/Words.h"

namespace {

struct EntryWords {
  FileKind kind;
  const char* entry;
  const char* one;
  const char* many;
};

constexpr EntryWords kEntryWords[] = {
    {FileKind::kProduct, "Plugin", "plugin is not started", "plugins are not started"},
    {FileKind::kProduct, "SubPlatform", "sub platform is not started",
     "sub platforms are not started"},
    {FileKind::kProduct, "Language", "language is missing", "languages are missing"},
    {FileKind::kDrivers, "Driver", "driver is missing", "drivers are missing"},
    {FileKind::kPortal, "MenuItem", "menu item is missing", "menu items are missing"},
    {FileKind::kPortal, "PortalMode", "mode is missing", "modes are missing"},
    {FileKind::kPortal, "SceneMode", "scene mode is missing", "scene modes are missing"},
    {FileKind::kPlugin, "Plugin", "dependency does not order the start",
     "dependencies do not order the start"},
    {FileKind::kPlugin, "Platform", "dependency on a platform is not read",
     "dependencies on platforms are not read"},
    {FileKind::kPlugin, "MenuItem", "menu item is missing", "menu items are missing"},
    {FileKind::kInstalled, "Addon", "addon does not count as installed",
     "addons do not count as installed"},
    {FileKind::kInstalled, "Tool", "tool does not count as installed",
     "tools do not count as installed"},
    {FileKind::kAddonList, "Addon", "addon is not offered", "addons are not offered"},
    {FileKind::kAddonList, "Application", "application is missing", "applications are missing"},
    {FileKind::kToolList, "Tool", "tool is not offered", "tools are not offered"},
    {FileKind::kAddon, "Plugin", "plugin of the addon is not started",
     "plugins of the addon are not started"},
    {FileKind::kAddon, "Application", "application is missing", "applications are missing"},
    {FileKind::kAddon, "Service", "service is missing", "services are missing"},
    {FileKind::kAddon, "Product", "supported product is not read",
     "supported products are not read"},
    {FileKind::kTool, "Product", "supported product is not read",
     "supported products are not read"}};

struct ValueWords {
  FileKind kind;
  const char* element;
  const char* loss;
};

constexpr ValueWords kValueWords[] = {
    {FileKind::kProduct, "Product", ", and every installed addon counts as incompatible"},
    {FileKind::kProduct, "Version", ", and no addon is read"},
    {FileKind::kPlugin, "Type", ", and the plugin is not started"},
    {FileKind::kPlugin, "IsDistributed", ", and a distributed module does not start the plugin"},
    {FileKind::kAddon, "ID", ", and the addon does not count as installed"},
    {FileKind::kTool, "ID", ", and the tool does not count as installed"}};

/// What follows from an absent value directly in the root; empty for nothing in particular.
std::string Consequence(const CheckedFile& file, const ElementSpec& meant, const XmlNode& parent) {
  if (&parent != &file.tree.root) return std::string();
  for (const ValueWords& words : kValueWords) {
    if (words.kind == file.kind && std::strcmp(words.element, meant.name) == 0) return words.loss;
  }
  return std::string();
}

std::string ValueLoss(const CheckedFile& file, const ElementSpec& meant, const XmlNode& parent) {
  const bool isThere = std::any_of(
      parent.children.begin(), parent.children.end(),
      [&](const XmlNode& child) { return child.space.empty() && child.name == meant.name; });
  const std::string tag = Tag(meant.name);
  if (isThere) return "it is not read; the " + tag + " beside it counts";
  const std::string absent = meant.absent;
  return "it is not read: " + tag + " reads as " + (absent.empty() ? "empty" : absent) +
         Consequence(file, meant, parent);
}

/// Namespaces do not matter: whole lists are lost because of them.
std::size_t CountNamed(const std::vector<XmlNode>& nodes, const char* name) {
  return static_cast<std::size_t>(std::count_if(
      nodes.begin(), nodes.end(), [&](const XmlNode& node) { return node.name == name; }));
}

std::string ListLoss(FileKind kind, const ElementSpec& meant,
                     const std::vector<const XmlNode*>& sections) {
  std::string losses;
  for (const ElementSpec& entry : meant.children) {
    std::size_t number = 0;
    for (const XmlNode* section : sections) number += CountNamed(section->children, entry.name);
    if (number == 0) continue;
    losses += (losses.empty() ? ": " : ", and ") + EntriesLost(kind, entry.name, number);
  }
  const char* list = sections.size() == 1 ? "the list in it is" : "the lists in them are";
  return list + std::string(" not read") + losses;
}

std::string EntryLoss(FileKind kind, const ElementSpec& meant,
                      const std::vector<const XmlNode*>& entries) {
  std::vector<std::string> names;
  for (const XmlNode* entry : entries) {
    const std::string id = EntryName(*entry);
    if (!id.empty()) names.push_back(id);
  }
  const std::string subject = names.size() == entries.size() ? QuotedList(names)
                              : entries.size() == 1          ? "it"
                                                             : "they";
  const char* verb = entries.size() == 1 ? " is" : " are";
  return subject + verb + " not read: " + EntriesLost(kind, meant.name, entries.size());
}

}  // namespace

std::string EntryName(const XmlNode& entry) {
  const std::string& attribute = entry.Value("ID");
  return attribute.empty() ? TextAt(entry, "ID") : attribute;
}

std::string EntriesLost(FileKind kind, const std::string& entry, std::size_t number) {
  const std::string count = std::to_string(number) + " ";
  for (const EntryWords& words : kEntryWords) {
    if (words.kind == kind && words.entry == entry) {
      return count + (number == 1 ? words.one : words.many);
    }
  }
  return count + (number == 1 ? "entry is not read" : "entries are not read");
}

std::string LossOf(const CheckedFile& file, const ElementSpec& meant, const XmlNode& parent,
                   const std::vector<const XmlNode*>& nodes) {
  if (meant.role == ElementRole::kSection) return ListLoss(file.kind, meant, nodes);
  if (meant.role == ElementRole::kEntry) return EntryLoss(file.kind, meant, nodes);
  if (meant.children.count > 0) return "what is in it is not read";
  return ValueLoss(file, meant, parent);
}
