#include "workbench/check/StrayNames.h"

#include <algorithm>
#include <map>
#include <utility>

#include "workbench/check/FileFinding.h"
#include "workbench/check/ModelWalk.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

struct Judgement {
  NameFault fault = NameFault::kNone;
  std::string advice;
  const ElementSpec* meant = nullptr;
  const AttributeSpec* meantAttribute = nullptr;
  std::vector<const XmlNode*> lost;
};

/// "<Plugins>", "<Addons> or <Tools>"
std::string Alternatives(const std::vector<std::string>& elements) {
  std::string text;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (i > 0) text += i + 1 == elements.size() ? " or " : ", ";
    text += Tag(elements[i]);
  }
  return text;
}

void AddOnce(std::vector<std::string>& names, const std::string& name) {
  if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
}

/// The name of the element that contains the one at `path`.
std::string ParentOf(FileKind kind, const std::string& path) {
  const std::size_t end = path.rfind('/');
  if (end == std::string::npos) return RootName(kind);
  const std::size_t begin = path.rfind('/', end - 1);
  return path.substr(begin == std::string::npos ? 0 : begin + 1, end - begin - 1);
}

/// `here` is left out: an element of that name in another place may be among the parents.
std::string OnlyIn(FileKind kind, const std::vector<std::string>& paths, const char* here) {
  std::vector<std::string> parents;
  for (const std::string& path : paths) {
    const std::string parent = ParentOf(kind, path);
    if (parent != here) AddOnce(parents, parent);
  }
  return "the frame reads it only in " + Alternatives(parents);
}

/// The elements of which the frame reads the attribute.
std::vector<std::string> ElementsWith(FileKind kind, const std::string& attribute) {
  std::vector<std::string> elements;
  for (const std::string& path : AllPaths(kind)) {
    const ElementSpec* spec = SpecAt(kind, path);
    if (spec->Attribute(attribute) != nullptr) AddOnce(elements, spec->name);
  }
  return elements;
}

/// Whether the element has something that one of this kind has.
bool Fits(const XmlNode& node, const ElementSpec& spec) {
  return std::any_of(node.children.begin(), node.children.end(),
                     [&](const XmlNode& child) { return spec.Child(child.name) != nullptr; }) ||
         std::any_of(node.attributes.begin(), node.attributes.end(),
                     [&](const XmlAttribute& one) { return spec.Attribute(one.name) != nullptr; });
}

/// The entry of a list that `node` was probably meant to be: it stands in the list and has what an
/// entry has. Null for none.
const ElementSpec* MeantEntry(const ElementSpec& list, const XmlNode& node) {
  for (const ElementSpec& entry : list.children) {
    const bool isEntry = entry.role == ElementRole::kEntry && entry.Attribute("ID") != nullptr;
    if (isEntry && node.Attribute("ID") != nullptr) return &entry;
  }
  return nullptr;
}

/// The lists and groups in `node` that the frame would read if they were in its parent.
Judgement JudgeWrapper(const ElementSpec& parent, const XmlNode& node) {
  Judgement judged;
  judged.fault = NameFault::kUnknown;
  for (const XmlNode& child : node.children) {
    const ElementSpec* known = child.space.empty() ? parent.Child(child.name) : nullptr;
    if (known == nullptr || known->value != ValueKind::kNone) continue;
    if (judged.meant == nullptr) judged.meant = known;
    if (judged.meant == known) judged.lost.push_back(&child);
  }
  if (judged.meant == nullptr) return judged;
  judged.fault = NameFault::kMisplaced;
  judged.advice = "the frame does not read it; " + Tag(judged.meant->name) +
                  " belongs directly in " + Tag(parent.name);
  return judged;
}

std::string AsAttribute(const ElementSpec& parent, const std::string& name) {
  return "not read: " + name + " is an attribute, <" + parent.name + " " + name + "=\"...\">";
}

Judgement JudgeElement(FileKind kind, const ElementSpec& parent, const XmlNode& node) {
  Judgement judged;
  const ElementSpec* known = parent.Child(node.name);
  if (known != nullptr && node.space.empty()) return judged;
  judged.meant = known != nullptr ? known : parent.Child(Nearest(node.name, parent.ChildNames()));
  const std::vector<std::string> paths = PathsOf(kind, node.name);
  if (!node.space.empty()) {
    const bool isMeant = judged.meant != nullptr || !paths.empty();
    judged.fault = isMeant ? NameFault::kInNamespace : NameFault::kNone;
  } else if (judged.meant != nullptr && (paths.empty() || Fits(node, *judged.meant))) {
    judged.fault = NameFault::kMisspelt;
    judged.advice = "unknown; did you mean " + Tag(judged.meant->name) + "?";
  } else if (parent.Attribute(node.name) != nullptr) {
    judged.fault = NameFault::kMisplaced;
    judged.meant = nullptr;
    judged.advice = AsAttribute(parent, node.name);
  } else if (!paths.empty()) {
    judged.fault = NameFault::kMisplaced;
    judged.meant = SpecAt(kind, paths.front());
    judged.advice = OnlyIn(kind, paths, parent.name);
  } else if (const ElementSpec* entry = MeantEntry(parent, node); entry != nullptr) {
    judged.fault = NameFault::kMisspelt;
    judged.meant = entry;
    judged.advice = "unknown; only " + Alternatives(parent.ChildNames()) + " is read in " +
                    Tag(parent.name) + ".";
  } else {
    const std::string attribute = Nearest(node.name, parent.AttributeNames());
    if (attribute.empty()) return JudgeWrapper(parent, node);
    judged.fault = NameFault::kMisspelt;
    judged.advice =
        "unknown; was the attribute " + attribute + " of " + Tag(parent.name) + " meant?";
  }
  judged.lost = {&node};
  return judged;
}

Judgement JudgeAttribute(FileKind kind, const ElementSpec& element, const XmlAttribute& attribute) {
  Judgement judged;
  const std::string& name = attribute.name;
  if (!attribute.space.empty() || element.Attribute(name) != nullptr) return judged;
  const std::string nearest = Nearest(name, element.AttributeNames());
  const std::vector<std::string> owners = ElementsWith(kind, name);
  if (!nearest.empty() && owners.empty()) {
    judged.fault = NameFault::kMisspelt;
    judged.meantAttribute = element.Attribute(nearest);
    judged.advice = "unknown; did you mean " + nearest + "?";
  } else if (element.Child(name) != nullptr) {
    judged.fault = NameFault::kMisplaced;
    judged.advice = "not read: " + name + " is an element in " + Tag(element.name) + ", <" + name +
                    ">...</" + name + ">";
  } else if (std::find(owners.begin(), owners.end(), element.name) != owners.end()) {
    judged.fault = NameFault::kUnknown;
    judged.advice = "the frame reads it only in a " + Tag(element.name) + " of another level";
  } else if (!owners.empty()) {
    judged.fault = NameFault::kMisplaced;
    judged.advice = "the frame reads it only as an attribute of " + Alternatives(owners);
  } else {
    const std::string child = Nearest(name, element.ChildNames());
    judged.fault = child.empty() ? NameFault::kUnknown : NameFault::kMisspelt;
    if (!child.empty()) {
      judged.advice =
          "unknown; was the element " + Tag(child) + " in " + Tag(element.name) + " meant?";
    }
  }
  return judged;
}

/// The elements with one fault, those with the same name and advice together.
class ElementCollection {
 public:
  ElementCollection(FileKind kind, NameFault fault) : m_kind(kind), m_fault(fault) {}

  void Add(const XmlNode& parent, const ElementSpec& spec, const XmlNode& node) {
    const bool isKnown = node.space.empty() && spec.Child(node.name) != nullptr;
    if (isKnown) return;
    Judgement judged = JudgeElement(m_kind, spec, node);
    if (judged.fault != m_fault) return;
    const auto key = std::make_pair(&spec, node.name + " " + judged.advice);
    const auto [found, isNew] = m_index.emplace(key, m_strays.size());
    if (isNew) {
      m_strays.push_back({judged.fault, judged.advice, judged.meant, {}, {}, &parent});
    }
    StrayElements& stray = m_strays[found->second];
    stray.elements.push_back(&node);
    stray.lost.insert(stray.lost.end(), judged.lost.begin(), judged.lost.end());
  }

  std::vector<StrayElements> Take() { return std::move(m_strays); }

 private:
  FileKind m_kind;
  NameFault m_fault;
  std::map<std::pair<const ElementSpec*, std::string>, std::size_t> m_index;
  std::vector<StrayElements> m_strays;
};

}  // namespace

std::vector<StrayElements> FindStrayElements(const CheckedFile& file, NameFault fault) {
  ElementCollection collection(file.kind, fault);
  VisitKnown(file, [&](const KnownElement& element) {
    for (const XmlNode& child : element.node.children) {
      collection.Add(element.node, element.spec, child);
    }
  });
  return collection.Take();
}

std::vector<StrayAttributes> FindStrayAttributes(const CheckedFile& file, NameFault fault) {
  std::map<std::pair<const ElementSpec*, std::string>, std::size_t> index;
  std::vector<StrayAttributes> strays;
  VisitKnown(file, [&](const KnownElement& element) {
    const ElementSpec& spec = element.spec;
    for (const XmlAttribute& attribute : element.node.attributes) {
      if (!attribute.space.empty() || spec.Attribute(attribute.name) != nullptr) continue;
      const Judgement judged = JudgeAttribute(file.kind, spec, attribute);
      if (judged.fault != fault) continue;
      const auto [found, isNew] =
          index.emplace(std::make_pair(&spec, attribute.name), strays.size());
      if (isNew) strays.push_back({judged.advice, judged.meantAttribute, {}, {}});
      strays[found->second].elements.push_back(&element.node);
      strays[found->second].attributes.push_back(&attribute);
    }
  });
  return strays;
}

void AddStrayAttributes(const CheckedFile& file, NameFault fault,
                        std::string (*what)(const StrayAttributes& stray), RuleFindings& findings) {
  for (const StrayAttributes& stray : FindStrayAttributes(file, fault)) {
    const XmlAttribute& first = *stray.attributes.front();
    const std::string& element = stray.elements.front()->name;
    findings.push_back(MakeFinding(file, first.place,
                                   "the attribute " + first.name + " of " + Tag(element) +
                                       Times(stray.elements.size()) + ": " + what(stray),
                                   element + "/" + first.name));
    AddOthers(file, stray.attributes, findings.back());
  }
}
