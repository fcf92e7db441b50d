// Edits each place of each kind of model file and compares three answers: whether the schema takes
// the file, whether the frame reads another value, and whether a rule says something.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/RecordJson.h"
#include "src/private/ProductModelReaderImpl.h"
#include "tests/support/FrameTest.h"
#include "workbench/check/ModelGrammar.h"
#include "workbench/check/ProductReader.h"
#include "workbench/check/Rule.h"
#include "workbench/check/SchemaCheck.h"

namespace fs = std::filesystem;

namespace {

const LocalNames kNames = {[](const std::string& local) { return fs::path(local); },
                           [](const fs::path& path) { return path.string(); }};

/// An element of a file that is made and edited.
struct Element {
  std::string name;
  std::string text;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<Element> children;
  const ElementSpec* spec = nullptr;

  std::string Xml() const {
    std::string xml = "<" + name;
    for (const auto& [attribute, value] : attributes) xml += " " + attribute + "=\"" + value + "\"";
    xml += ">" + text;
    if (!children.empty()) xml += "\n";
    for (const Element& child : children) xml += child.Xml();
    return xml + "</" + name + ">\n";
  }
};

/// Values that make the product work; all others are made by their kind.
const std::map<std::string, std::string> kValues = {
    {"ProductDescription/Product", "NVX"},
    {"ProductDescription/Version", "2.7.1.105"},
    {"ProductDescription/Plugins/Plugin/@ID", "a.server"},
    {"DAMDrivers/Driver/@ID", "c.driver"},
    {"Plugin/Type", "2"},
    {"Plugin/ID", "a.server"},
    {"Plugin/DependencyList/Plugin/@ID", "b.server"},
    {"Plugin/DependencyList/Plugin/@DependentType", "1"},
    {"Plugin/DependencyList/Platform/@Category", "platform"},
    {"InstalledProductsDescription/Addons/Addon/@ID", "Parking"},
    {"InstalledProductsDescription/Tools/Tool/@ID", "Viewer"},
    {"AddonList/Addon/ID", "Parking"},
    {"ToolList/Tool/ID", "Viewer"},
    {"AddonDescription/ID", "Parking"},
    {"AddonDescription/PublishingType", "3"},
    {"AddonDescription/SupportProducts/Product/ProductLogo", "Velmora Professional"},
    {"AddonDescription/Plugins/Plugin/@ID", "e.server"},
    {"AddonDescription/Plugins/Plugin/@Category", "server"},
    {"ToolDescription/ID", "Viewer"},
    {"ToolDescription/SupportProducts/Product/ProductLogo", "Velmora Professional"}};

std::string ValueAt(const std::string& path, ValueKind kind) {
  const auto known = kValues.find(path);
  if (known != kValues.end()) return known->second;
  switch (kind) {
    case ValueKind::kNone:
      return std::string();
    case ValueKind::kNumber:
      return "7";
    case ValueKind::kFlag:
      return "1";
    case ValueKind::kTrue:
      return "true";
    case ValueKind::kVersion:
      return "2.7.1";
    case ValueKind::kText:
    case ValueKind::kId:
      break;
  }
  return "some." + path.substr(path.rfind('/') + 1);
}

/// An element with all that it may have. One that may stand in itself does so once.
Element Make(const ElementSpec& spec, const std::string& path) {
  Element element;
  element.name = spec.name;
  element.spec = &spec;
  element.text = ValueAt(path, spec.value);
  for (const AttributeSpec& attribute : spec.attributes) {
    const std::string name = attribute.name;
    const std::string at = path + "/@" + name;
    element.attributes.emplace_back(name, ValueAt(at, attribute.value));
  }
  const std::string itself = "MenuItem/MenuItem/MenuItem";
  for (const ElementSpec& child : spec.children) {
    const std::string below = path + "/" + child.name;
    if (below.find(itself) == std::string::npos) element.children.push_back(Make(child, below));
  }
  return element;
}

/// A change of an element of `parent`, or of an attribute of that element.
struct Edit {
  std::string what;      // "blanks around <NameKey>"
  bool isMeant = false;  // another value or none: what the frame then reads is what is written
  std::function<void(Element& parent, std::size_t child)> make;
  bool isInside = false;  // of what is in the element: it stays what it is, and where it is
};

/// `blankIsEmpty`: as in an element, in an attribute a blank is a value.
void AddValueEdits(std::vector<Edit>& edits, const std::string& what, ValueKind kind,
                   bool blankIsEmpty, const std::function<std::string&(Element& element)>& value) {
  const auto add = [&](const char* how, bool isMeant,
                       const std::function<std::string(const std::string&)>& change) {
    edits.push_back(
        {std::string(how) + " " + what, isMeant, [=](Element& parent, std::size_t child) {
           std::string& text = value(parent.children[child]);
           text = change(text);
         }});
  };
  add("empty", true, [](const std::string&) { return std::string(); });
  add("blank", blankIsEmpty, [](const std::string&) { return std::string(" "); });
  add("blanks around", false, [](const std::string& text) { return " " + text + "\n"; });
  if (kind == ValueKind::kText || kind == ValueKind::kId || kind == ValueKind::kVersion) {
    add("another text in", true, [](const std::string& text) { return text + ".x"; });
    return;
  }
  if (kind == ValueKind::kNumber) {
    add("another number in", true, [](const std::string& text) { return text + "0"; });
  }
  add("a word in", false, [](const std::string&) { return std::string("yes"); });
  add("a capital word in", false, [](const std::string&) { return std::string("True"); });
  add("a unit behind", false, [](const std::string& text) { return text + " MB"; });
  add("overflow in", false, [](const std::string&) { return std::string("99999999999"); });
}

std::vector<Edit> EditsOfAttribute(const AttributeSpec& spec, std::size_t index) {
  std::vector<Edit> edits;
  const std::string what = spec.name;
  edits.push_back({"no " + what, true, [=](Element& parent, std::size_t child) {
                     auto& attributes = parent.children[child].attributes;
                     attributes.erase(attributes.begin() + static_cast<std::ptrdiff_t>(index));
                   }});
  edits.push_back({"misspelt " + what, false, [=](Element& parent, std::size_t child) {
                     parent.children[child].attributes[index].first += "s";
                   }});
  edits.push_back({"prefix of " + what, false, [=](Element& parent, std::size_t child) {
                     auto& attributes = parent.children[child].attributes;
                     attributes[index].first = "x:" + what;
                     attributes.emplace_back("xmlns:x", "urn:x");
                   }});
  AddValueEdits(edits, what, spec.value, false,
                [=](Element& element) -> std::string& { return element.attributes[index].second; });
  return edits;
}

std::vector<Edit> EditsOf(const ElementSpec& spec) {
  std::vector<Edit> edits;
  const std::string what = "<" + std::string(spec.name) + ">";
  const auto add = [&](const char* how, bool isMeant,
                       std::function<void(Element & parent, std::size_t child)> make) {
    edits.push_back({std::string(how) + " " + what, isMeant, std::move(make)});
  };
  const auto addInside = [&](const char* how, bool isMeant,
                             std::function<void(Element & parent, std::size_t child)> make) {
    add(how, isMeant, std::move(make));
    edits.back().isInside = true;
  };
  const auto at = [](std::size_t child) { return static_cast<std::ptrdiff_t>(child); };
  add("no", true, [=](Element& parent, std::size_t child) {
    parent.children.erase(parent.children.begin() + at(child));
  });
  add("misspelt", false,
      [](Element& parent, std::size_t child) { parent.children[child].name += "s"; });
  add("prefix of", false, [](Element& parent, std::size_t child) {
    Element& element = parent.children[child];
    element.name = "x:" + element.name;
    element.attributes.emplace_back("xmlns:x", "urn:x");
  });
  add("two", true, [=](Element& parent, std::size_t child) {
    const Element copy = parent.children[child];
    parent.children.insert(parent.children.begin() + at(child), copy);
  });
  add("an empty one before", spec.role == ElementRole::kEntry,
      [=](Element& parent, std::size_t child) {
        Element empty;
        empty.name = parent.children[child].name;
        parent.children.insert(parent.children.begin() + at(child), empty);
      });
  addInside("an unknown attribute of", false, [](Element& parent, std::size_t child) {
    parent.children[child].attributes.emplace_back("Foo", "1");
  });
  addInside("an unknown element in", false, [](Element& parent, std::size_t child) {
    Element unknown;
    unknown.name = "Foo";
    parent.children[child].children.push_back(unknown);
  });
  if (spec.value == ValueKind::kNone) {
    addInside("text in", false,
              [](Element& parent, std::size_t child) { parent.children[child].text = "text"; });
    addInside("nothing in", true,
              [](Element& parent, std::size_t child) { parent.children[child].children.clear(); });
  } else {
    AddValueEdits(edits, what, spec.value, true,
                  [](Element& element) -> std::string& { return element.text; });
  }
  std::size_t index = 0;
  for (const AttributeSpec& attribute : spec.attributes) {
    std::vector<Edit> more = EditsOfAttribute(attribute, index++);
    std::move(more.begin(), more.end(), std::back_inserter(edits));
  }
  return edits;
}

constexpr int kKinds = static_cast<int>(FileKind::kTool) + 1;

std::string NameOf(FileKind kind) {
  switch (kind) {
    case FileKind::kProduct:
      return "Product.xml";
    case FileKind::kDrivers:
      return "bin/META_INFO/DeviceDrivers.xml";
    case FileKind::kPortal:
      return "bin/META_INFO/Portal.xml";
    case FileKind::kPlatform:
      return "bin/META_INFO/Platform.xml";
    case FileKind::kPlugin:
      return "bin/META_INFO/a.server/a.server.xml";
    case FileKind::kInstalled:
      return "bin/TevAddons/InstalledProducts.xml";
    case FileKind::kAddonList:
      return "ProductAddons.xml";
    case FileKind::kToolList:
      return "ProductTools.xml";
    case FileKind::kAddon:
      return "bin/TevAddons/Parking/Parking.xml";
    case FileKind::kTool:
      break;
  }
  return "bin/TevAddons/Viewer/Viewer.xml";
}

/// What is said of a product with an edited file.
struct Answers {
  std::string model;               // as the frame reads it
  std::string refusal;             // of the edited file by its schema; empty when it takes the file
  std::set<std::string> findings;  // "TEV121 bin/...: <ID> ends with ..."
};

class SchemaRules : public FrameTest {
 protected:
  SchemaRules() {
    for (int kind = 0; kind < kKinds; ++kind) {
      const ElementSpec& spec = Grammar(static_cast<FileKind>(kind));
      m_files.push_back(Make(spec, spec.name));
      Write(static_cast<FileKind>(kind), m_files.back());
    }
    for (const std::string id : {"c.driver", "e.server"}) {
      tree.Write("bin/META_INFO/" + id + "/" + id + ".xml", PluginXml(id));
    }
  }

  void Write(FileKind kind, const Element& root) const {
    tree.Write(NameOf(kind), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + root.Xml());
  }

  Answers Ask(FileKind kind) const {
    Answers answers;
    answers.model = FrameModel();
    const auto place = FindProduct(tree.ExeDirectory(), kNames);
    const auto product = ReadCheckedProduct(place.value(), kNames, 1);
    for (const CheckedFile& file : product->files) {
      if (file.name != NameOf(kind)) continue;
      for (const SchemaError& error : ValidateAgainstSchema(kind, file.tree)) {
        answers.refusal += error.message + "\n";
      }
    }
    for (const RuleFinding& finding : RunRules(AllRules(), *product)) {
      answers.findings.insert(finding.rule + " " + finding.place.file + ": " + finding.message);
    }
    return answers;
  }

  /// Calls `judge(edit, answers)` for every edit of every place of the file.
  template <typename Judge>
  void EditEach(FileKind kind, const Judge& judge) {
    Element holder;
    holder.children.push_back(m_files[static_cast<std::size_t>(kind)]);
    std::vector<std::size_t> place;
    EditBelow(kind, holder, holder, place, judge);
    Write(kind, holder.children.front());
  }

 private:
  static std::string FrameModel() {
    g_productName.clear();
    g_productVersion.clear();
    ProductModel model;
    std::vector<AddonModel> addons;
    std::vector<ToolModel> tools;
    const TevModelParse::CProductXmlReader reader;
    const bool isRead = reader.ReadServerModel(model);
    reader.ReadServerAddonsModel(addons);
    reader.ReadServerToolsModel(tools);
    return Json{isRead, model, addons, tools}.dump(1);
  }

  /// `parent` is the element of `holder` that `place` leads to.
  template <typename Judge>
  void EditBelow(FileKind kind, const Element& holder, const Element& parent,
                 std::vector<std::size_t>& place, const Judge& judge) {
    for (std::size_t child = 0; child < parent.children.size(); ++child) {
      const Element& element = parent.children[child];
      for (const Edit& edit : EditsOf(*element.spec)) {
        if (place.empty() && !edit.isInside) continue;  // another root is another kind of file
        Element edited = holder;
        Element* at = &edited;
        for (const std::size_t step : place) at = &at->children[step];
        edit.make(*at, child);
        Write(kind, edited.children.front());
        judge(edit, Ask(kind));
      }
      place.push_back(child);
      EditBelow(kind, holder, element, place, judge);
      place.pop_back();
    }
  }

  std::vector<Element> m_files;
};

class SchemaRulesOf : public SchemaRules, public testing::WithParamInterface<int> {};

TEST_P(SchemaRulesOf, LeaveNoDifferenceUnnamed) {
  const auto kind = static_cast<FileKind>(GetParam());
  const Answers before = Ask(kind);
  ASSERT_EQ("", before.refusal);
  int refused = 0;
  int changed = 0;
  EditEach(kind, [&](const Edit& edit, const Answers& after) {
    std::vector<std::string> said;
    std::set_difference(after.findings.begin(), after.findings.end(), before.findings.begin(),
                        before.findings.end(), std::back_inserter(said));
    const bool isChanged = after.model != before.model;
    if (!after.refusal.empty()) ++refused;
    if (isChanged) ++changed;
    if (!said.empty()) return;
    EXPECT_EQ("", after.refusal) << edit.what << ": the schema refuses it and no rule names it";
    EXPECT_TRUE(!isChanged || edit.isMeant)
        << edit.what << ": the frame reads another value, and neither schema nor rule says so";
  });
  EXPECT_LT(0, refused);
  EXPECT_LT(0, changed);
}

INSTANTIATE_TEST_SUITE_P(EachKind, SchemaRulesOf, testing::Range(0, kKinds), [](const auto& kind) {
  return std::string(Grammar(static_cast<FileKind>(kind.param)).name);
});

TEST_F(SchemaRules, BeginWithFilesInWhichNothingIsRefused) {
  for (int kind = 0; kind < kKinds; ++kind) {
    EXPECT_EQ("", Ask(static_cast<FileKind>(kind)).refusal);
  }
}

}  // namespace
