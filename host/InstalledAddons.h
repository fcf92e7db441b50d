#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "workbench/product/XmlTags.h"

/// An addon that is installed, as InstalledProducts.xml names it.
struct InstalledAddon {
  std::string id;
  std::string version;
};

/// The text of an InstalledProducts.xml after addons were installed, and which places of it the
/// text before has.
///
/// An addon that the text lists in another version gets a new entry in the place of the old one:
/// packages and their checksums are those of the old version. Any other addon is added at the end
/// of the list. A text that the frame reads as empty stays as it is. Plain value.
class InstalledAddons {
 public:
  /// `before`: empty when there is no file.
  InstalledAddons(std::string before, const std::vector<InstalledAddon>& addons);

  const std::string& Before() const { return m_before; }
  const std::string& After() const { return m_after; }

  /// The place in Before() of a place in After(): of the old entry for one in an entry that was
  /// replaced; none in an entry that was added.
  std::optional<TextPlace> PlaceBefore(TextPlace place) const;

 private:
  /// A part of the text before, and what stands there after. Without a line feed.
  struct Change {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;
    bool isEntry = false;  // the part is an entry
    TextPlace placeBefore = {};
    TextPlace endBefore = {};
    TextPlace placeAfter = {};
    TextPlace endAfter = {};
  };

  void AddToList(const XmlNode& root, const XmlTags& tags, const std::string& entries);
  void Apply();

  std::string m_before;
  std::string m_after;
  std::vector<Change> m_changes;  // in the order of the text
};
