#include "host/InstalledAddons.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "workbench/check/CheckedProduct.h"

namespace {

std::string AttributeText(const std::string& value) {
  std::string text;
  for (const char c : value) {
    const bool isPlain = std::string_view("&<\"\t\r\n").find(c) == std::string_view::npos;
    text += isPlain ? std::string(1, c) : "&#" + std::to_string(static_cast<int>(c)) + ";";
  }
  return text;
}

std::string Attributes(const InstalledAddon& addon) {
  return "Addon ID=\"" + AttributeText(addon.id) + "\" Version=\"" + AttributeText(addon.version) +
         "\"";
}

std::string InElement(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

bool IsBefore(TextPlace a, TextPlace b) {
  return a.line < b.line || (a.line == b.line && a.column < b.column);
}

/// `place`, which lies behind `from`, when that moves to `to`.
TextPlace Moved(TextPlace place, TextPlace from, TextPlace to) {
  if (place.line == from.line && place.column > 0) place.column += to.column - from.column;
  place.line += to.line - from.line;
  return place;
}

/// The entry of this ID that counts: the last one that the frame reads; null for none.
const XmlNode* EntryOf(const XmlNode& root, const std::string& id) {
  const XmlNode* found = nullptr;
  for (const ListEntry& entry : SelectList(root, "Addons/Addon")) {
    if (entry.node != nullptr && entry.node->Value("ID") == id) found = entry.node;
  }
  return found;
}

const XmlTag& TagOf(const XmlNode& node, const XmlTags& tags) {
  return *std::lower_bound(
      tags.elements.begin(), tags.elements.end(), node.place,
      [](const XmlTag& tag, TextPlace place) { return IsBefore(tag.place, place); });
}

}  // namespace

InstalledAddons::InstalledAddons(std::string before, const std::vector<InstalledAddon>& addons)
    : m_before(std::move(before)) {
  const XmlTree tree = ParseXmlTree(m_before);
  const std::string rootName = RootName(FileKind::kInstalled);
  const bool isRead = tree.wellFormed && tree.root.name == rootName && tree.root.space.empty();
  const XmlTags tags = isRead ? ReadXmlTags(m_before) : XmlTags();
  std::string added;
  for (const InstalledAddon& addon : addons) {
    const XmlNode* old = isRead ? EntryOf(tree.root, addon.id) : nullptr;
    if (old == nullptr) {
      added += "<" + Attributes(addon) + "/>";
    } else if (old->Value("Version") != addon.version) {
      const XmlTag& tag = TagOf(*old, tags);
      const char* end = tag.endTag == 0 ? "/>" : ">";
      m_changes.push_back({tag.begin, tag.end, "<" + Attributes(addon) + end, true});
    }
  }
  if (m_before.empty()) {
    m_changes.push_back({0, 0, InElement(rootName, InElement("Addons", added))});
  } else if (isRead && !added.empty()) {
    AddToList(tree.root, tags, added);
  }
  Apply();
}

void InstalledAddons::AddToList(const XmlNode& root, const XmlTags& tags,
                                const std::string& entries) {
  const std::vector<const XmlNode*> lists = Select(root, "Addons");
  const XmlNode& parent = lists.empty() ? root : *lists.front();
  const std::string content = lists.empty() ? InElement("Addons", entries) : entries;
  const XmlTag& tag = TagOf(parent, tags);
  if (tag.endTag != 0) {
    m_changes.push_back({tag.endTag, tag.endTag, content});
  } else {
    const std::size_t slash = tag.end - std::string_view("/>").size();
    m_changes.push_back({slash, tag.end, ">" + content + "</" + parent.name + ">"});
  }
}

void InstalledAddons::Apply() {
  std::sort(m_changes.begin(), m_changes.end(),
            [](const Change& a, const Change& b) { return a.begin < b.begin; });
  const std::string_view before = m_before;
  std::size_t at = 0;
  TextPlace placeBefore = {1, 1};
  TextPlace placeAfter = {1, 1};
  for (Change& change : m_changes) {
    const std::string_view kept = before.substr(at, change.begin - at);
    change.placeBefore = PlaceBehind(placeBefore, kept);
    change.placeAfter = PlaceBehind(placeAfter, kept);
    change.endBefore =
        PlaceBehind(change.placeBefore, before.substr(change.begin, change.end - change.begin));
    change.endAfter = PlaceBehind(change.placeAfter, change.text);
    m_after.append(kept).append(change.text);
    at = change.end;
    placeBefore = change.endBefore;
    placeAfter = change.endAfter;
  }
  m_after += before.substr(at);
}

std::optional<TextPlace> InstalledAddons::PlaceBefore(TextPlace place) const {
  const auto next = std::find_if(m_changes.begin(), m_changes.end(), [&](const Change& change) {
    return IsBefore(place, change.placeAfter);
  });
  if (next == m_changes.begin()) return place;
  const Change& change = *std::prev(next);
  if (!IsBefore(place, change.endAfter)) return Moved(place, change.endAfter, change.endBefore);
  return change.isEntry ? std::optional<TextPlace>(change.placeBefore) : std::nullopt;
}
