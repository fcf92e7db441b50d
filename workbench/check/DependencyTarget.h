#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "workbench/check/CheckedProduct.h"

/// What an ID that a dependency names stands for.
enum class TargetKind {
  kStarted,        // a plugin or sub platform that the frame starts
  kExecutable,     // kept, and left to the framework for executables
  kDriver,         // kept, and left to the platform
  kTrimmed,        // not distributed, in the module that starts only distributed plugins
  kWrongType,      // the Type of its description is neither 1 nor 2
  kEmpty,          // its description reads as empty
  kWithoutID,      // its description has no ID
  kOtherID,        // its description has another ID
  kUnread,         // another rule reports why: no description, or in a list that is not read
  kOfAddon,        // listed by an installed addon that the frame does not add to the product
  kPlatform,       // the platform of Product.xml
  kAddon,          // an addon or
  kTool,           // a tool itself
  kDescribedOnly,  // in META_INFO, and in no list
  kUnknown
};

struct DependencyTarget {
  TargetKind kind = TargetKind::kUnknown;
  const PluginEntry* entry = nullptr;        // that lists it
  const Description* description = nullptr;  // that is dropped
  const InstalledEntry* addon = nullptr;     // that it is, or that lists it
};

/// Finds what IDs stand for. Indexes the product when it is first asked for an ID that is not
/// started, so that a good product costs nothing.
class DependencyTargets {
 public:
  explicit DependencyTargets(const CheckedProduct& product) : m_product(product) {}

  DependencyTarget Find(const std::string& id);

 private:
  void Index();
  void IndexLists();
  void CollectTexts(const XmlNode& node);
  bool IsOffered(const PluginEntry& entry) const;
  TargetKind UnlessOffered(const PluginEntry& entry) const;
  DependencyTarget Dropped(const std::string& id) const;
  DependencyTarget Listed(const std::string& id) const;
  DependencyTarget Other(const std::string& id) const;

  const CheckedProduct& m_product;
  bool m_indexed = false;
  std::set<std::string_view> m_executables;
  std::set<std::string_view> m_drivers;
  std::multimap<std::string_view, const Description*> m_descriptions;
  std::map<std::string_view, const PluginEntry*> m_entries;
  std::map<std::string_view, const InstalledEntry*> m_addons;
  std::set<std::string_view> m_offeredAddons;
  std::set<std::string_view> m_tools;
  std::string m_platform;

  // Of the files that list plugins: every text in them, wherever it stands, and whether all of
  // them can be read.
  std::set<std::string_view> m_texts;
  bool m_allListsRead = true;
};
