#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "workbench/check/ElementLoss.h"
#include "workbench/check/FileFinding.h"
#include "workbench/check/ModelWalk.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// The entries of one name in the sections of one list.
struct SplitList {
  const char* section;
  const char* entry;
  std::vector<const XmlNode*> filled;  // sections with entries
  std::vector<const XmlNode*> hidden;  // entries that are never read
};

/// The entries that a position of an earlier section hides; see SelectList.
SplitList ReadList(const XmlNode& parent, const char* section, const char* entry) {
  SplitList list = {section, entry, {}, {}};
  std::size_t read = 0;
  for (const XmlNode* one : Select(parent, section)) {
    const std::vector<const XmlNode*> here = Select(*one, entry);
    if (!here.empty()) list.filled.push_back(one);
    const std::size_t hidden = std::min(read, here.size());
    list.hidden.insert(list.hidden.end(), here.begin(),
                       here.begin() + static_cast<std::ptrdiff_t>(hidden));
    read = std::max(read, here.size());
  }
  return list;
}

std::string NameWithoutID(const CheckedProduct& product) {
  return product.bin + "/META_INFO/.xml";
}

/// Whether the frame asks for the description of a plugin without an ID and does not find it.
bool MissesDescription(const CheckedProduct& product, const CheckedFile& file,
                       const std::string& entry) {
  if (entry != "Plugin" || file.kind == FileKind::kPlugin) return false;
  const std::string name = NameWithoutID(product);
  return std::none_of(product.files.begin(), product.files.end(), [&](const CheckedFile& one) {
    return one.name == name && !one.readName.empty();
  });
}

bool IsRefused(const CheckedProduct& product, const CheckedFile& file, const std::string& entry) {
  return file.kind == FileKind::kProduct && MissesDescription(product, file, entry);
}

/// What the frame makes of the entries that it counts and does not find.
std::string Instead(const CheckedProduct& product, const CheckedFile& file, const SplitList& list) {
  const std::string entry = list.entry;
  const bool isMenu =
      file.kind == FileKind::kPortal && std::string(list.section) != "SceneMenuList";
  if (isMenu && entry == "MenuItem") return std::string();  // dropped, since nothing is in them
  std::string reads =
      "; instead the frame reads " + Counted(list.hidden.size(), "empty " + Tag(entry));
  if (MissesDescription(product, file, entry)) {
    return reads + ", asks for " + NameWithoutID(product) + ", which does not exist, and " +
           (file.kind == FileKind::kAddon ? "skips the whole addon"
                                          : "refuses the product: nothing starts");
  }
  if (entry == "SubPlatform") return reads + ", which never stops: Frame_Stop waits for ever";
  return reads;
}

std::string Message(const CheckedProduct& product, const CheckedFile& file, const SplitList& list) {
  std::vector<std::string> names;
  for (const XmlNode* entry : list.hidden) {
    const std::string id = EntryName(*entry);
    if (!id.empty()) names.push_back(id);
  }
  const std::size_t hidden = list.hidden.size();
  const std::string which = names.size() == hidden
                                ? QuotedList(names) + (hidden == 1 ? " is" : " are") + " not read"
                                : std::string();
  const std::string lost = EntriesLost(file.kind, list.entry, hidden);
  // That nothing starts says it all.
  const bool isAllSaid = !which.empty() && IsRefused(product, file, list.entry);
  return "a second " + Tag(list.section) + ": " + which +
         (isAllSaid ? "" : (which.empty() ? "" : ": ") + lost) + Instead(product, file, list) +
         "; move all entries into one " + Tag(list.section);
}

void CheckSection(const CheckedProduct& product, const CheckedFile& file, const XmlNode& parent,
                  const ElementSpec& section, RuleFindings& findings) {
  for (const ElementSpec& entry : section.children) {
    const SplitList list = ReadList(parent, section.name, entry.name);
    if (list.filled.size() < 2) continue;
    RuleFinding finding = MakeFinding(file, list.filled[1]->place, Message(product, file, list),
                                      std::string(section.name) + "/" + entry.name);
    finding.related.push_back({PlaceOf(file, *list.filled.front()), "the first is here"});
    finding.refused = IsRefused(product, file, entry.name);
    findings.push_back(std::move(finding));
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    if (file.kind == FileKind::kTool) continue;  // of a tool's lists only the first entry is read
    VisitKnown(file, [&](const KnownElement& element) {
      const XmlNode& node = element.node;
      const ElementSpec& spec = element.spec;
      for (const ElementSpec& child : spec.children) {
        if (child.role == ElementRole::kSection) {
          CheckSection(product, file, node, child, findings);
        }
      }
    });
  }
}

}  // namespace

TEV_RULE(SecondSection) = {
    "TEV113",
    Severity::kError,
    "A list stands in two sections, and a part of its entries is not read",
    "The frame counts the entries of all sections of a list and then asks for each by its number. "
    "But the numbers begin anew in every section, and the first section with such a number counts: "
    "the entries of a later section are hidden by those of the first, and for the last numbers "
    "there is no entry. The frame reads an empty one for each of them. For an empty <Plugin> it "
    "asks for META_INFO/.xml and then refuses the product.",
    "<Plugins> with three entries, and below it a second <Plugins> with one",
    "Move all entries into one section.",
    &Check};
