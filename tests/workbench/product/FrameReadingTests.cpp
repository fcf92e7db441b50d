// Compares how the workbench and the frame read the same files.

#include <libxml/xmlerror.h>

#include <filesystem>
#include <random>
#include <set>

#include "src/private/DottedText.h"
#include "src/private/ProductModelReaderImpl.h"
#include "tests/support/FrameTest.h"
#include "workbench/check/ProductReader.h"
#include "workbench/product/XmlTree.h"

namespace fs = std::filesystem;

namespace {

const LocalNames kNames = {[](const std::string& local) { return fs::path(local); },
                           [](const fs::path& path) { return path.string(); }};

/// The path in the last "[...]" of a log text that starts with `begin`; empty for another text.
std::string Argument(const std::string& text, const std::string& begin) {
  if (text.compare(0, begin.size(), begin) != 0) return std::string();
  const std::size_t from = text.rfind('[') + 1;
  return fs::path(text.substr(from, text.rfind(']') - from)).lexically_normal().string();
}

/// The paths of the files that could not be read.
struct Unread {
  bool product = false;
  std::set<std::string> required;
  std::set<std::string> other;

  bool operator==(const Unread& with) const {
    return product == with.product && required == with.required && other == with.other;
  }
};

std::ostream& operator<<(std::ostream& out, const Unread& unread) {
  out << (unread.product ? "product unread" : "product read");
  for (const std::string& path : unread.required) out << "\n  required " << path;
  for (const std::string& path : unread.other) out << "\n  other " << path;
  return out;
}

class FrameReading : public FrameTest {
 protected:
  template <std::size_t N>
  std::string Any(const std::string (&texts)[N]) {
    return texts[random() % N];
  }

  bool Chance(unsigned of) { return random() % of == 0; }

  std::string Entry(const std::string& element, const std::string& id) {
    if (Chance(25)) return "<" + element + "/>";
    return "<" + element + " ID='" + id + "' Category='" + (Chance(3) ? "x" : "server") + "'/>";
  }

  /// A section of a list, sometimes split into two sections.
  std::string Section(const std::string& section, const std::string& element,
                      const std::string& id) {
    std::string text = "<" + section + ">";
    for (int i = 1; i <= 3; ++i) {
      if (Chance(10)) text += "</" + section + "><" + section + ">";
      if (Chance(2)) text += Entry(element, id + std::to_string(i));
    }
    return text + "</" + section + ">";
  }

  /// Writes a file, at random: valid, broken, empty, with another root, with a stand-in, or not at
  /// all.
  void Put(const std::string& path, const std::string& root, const std::string& inner) {
    const std::string good = "<" + root + ">" + inner + "</" + root + ">";
    const std::string contents[] = {
        good, good + "\n\n", "<" + root + ">" + inner,
        "\n", "<x/>",        "<" + root + " xmlns='urn:x'>" + inner + "</" + root + ">"};
    const std::string standIn = path.substr(0, path.rfind('.')) + ".data";
    if (Chance(25)) {
      if (Chance(2)) tree.Write(path, "");
      if (Chance(2)) tree.Write(standIn, Chance(5) ? "" : good);
    } else {
      tree.Write(path, Chance(10) ? Any(contents) : good);
    }
  }

  void PutPlugin(const std::string& id) {
    Put("bin/META_INFO/" + id + "/" + id + ".xml", "Plugin", "<Type>2</Type><ID>" + id + "</ID>");
  }

  void PutRandomProduct() {
    const std::string versions[] = {"2.6.1", "2.6.1", "2.6", "3..1.2", "..1.2", ""};
    Put("Product.xml", "ProductDescription",
        "<Version>" + Any(versions) + "</Version>" + Section("Plugins", "Plugin", "p"));
    Put("bin/META_INFO/DeviceDrivers.xml", "DAMDrivers", Entry("Driver", "d"));
    Put("bin/META_INFO/Portal.xml", "PortalDescription", "");
    Put("bin/META_INFO/Platform.xml", "Platform", "");
    Put("ProductAddons.xml", "AddonList", "");
    Put("ProductTools.xml", "ToolList", "");
    Put("bin/TevAddons/InstalledProducts.xml", "InstalledProductsDescription",
        Section("Addons", "Addon", "a") + Section("Tools", "Tool", "t"));
    for (const std::string id : {"p1", "p2", "p3", "d", "ap1", "ap2", "ap3"}) PutPlugin(id);
    for (const std::string id : {"a1", "a2", "a3"}) {
      Put("bin/TevAddons/" + id + "/" + id + ".xml", "AddonDescription",
          "<ID>" + (Chance(10) ? "other" : id) + "</ID>" + Section("Plugins", "Plugin", "ap"));
    }
    for (const std::string id : {"t1", "t2", "t3"}) {
      Put("bin/TevAddons/" + id + "/" + id + ".xml", "ToolDescription", "<ID>" + id + "</ID>");
    }
  }

  /// The files that the frame would not read, by what the workbench has read.
  Unread OwnUnread() const {
    const auto place = FindProduct(tree.ExeDirectory(), kNames);
    const auto product = ReadCheckedProduct(*place, kNames, 1);
    std::set<const CheckedFile*> required;
    for (const PluginEntry& entry : product->entries) {
      if (entry.addon == nullptr) required.insert(entry.descriptionFile);
    }
    Unread own;
    for (const CheckedFile& file : product->files) {
      const bool isFixed = file.kind <= FileKind::kPlatform;
      if (!file.readName.empty()) continue;
      if (!isFixed && required.count(&file) == 0) continue;
      own.product = true;
      own.required.insert((place->folder / file.name).lexically_normal().string());
      if (isFixed) return own;  // the frame stops at the first of them
    }
    if (own.product) return own;
    for (const CheckedFile& file : product->files) {
      if (file.readName.empty() && IsAskedFor(*product, file)) {
        own.other.insert((place->folder / file.name).lexically_normal().string());
      }
    }
    return own;
  }

  /// Whether the frame asks for a file that a product need not have.
  static bool IsAskedFor(const CheckedProduct& product, const CheckedFile& file) {
    const bool readsAddons = !ShortVersionOf(product.model.Version).empty();
    const bool hasAddons = !product.File(FileKind::kAddonList).readName.empty();
    const bool hasTools = !product.File(FileKind::kToolList).readName.empty();
    if (file.kind == FileKind::kAddonList) return readsAddons;
    if (file.kind == FileKind::kTool) return hasTools;
    return file.kind == FileKind::kInstalled || file.kind == FileKind::kToolList ||
           (readsAddons && hasAddons);
  }

  std::mt19937 random{7};
};

TEST_F(FrameReading, LeavesTheSameFilesUnread) {
  int products = 0;
  for (int run = 0; run < 400; ++run) {
    tree.Remove("");
    PutRandomProduct();
    Log::Instance().Clear();
    g_productVersion.clear();

    // Discards libxml2's messages about broken files.
    xmlSetStructuredErrorFunc(nullptr, [](auto...) {});
    Unread frame;
    ProductModel model;
    std::vector<AddonModel> addons;
    std::vector<ToolModel> tools;
    const TevModelParse::CProductXmlReader reader;
    frame.product = !reader.ReadServerModel(model);
    if (!frame.product) {
      reader.ReadServerAddonsModel(addons);
      reader.ReadServerToolsModel(tools);
    }
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    for (const LogLine& line : log.Lines()) {
      for (const char* begin : {"ReadFile  failed path[", "ReadFile  failed str_xml_path["}) {
        const std::string path = Argument(line.text, begin);
        if (!path.empty()) frame.required.insert(path);
      }
      for (const char* begin : {"ReadFile failed. xml path [", "ReadFile plugin["}) {
        const std::string path = Argument(line.text, begin);
        if (!path.empty()) frame.other.insert(path);
      }
    }

    ASSERT_EQ(frame, OwnUnread()) << "run " << run;
    if (!frame.product) ++products;
  }
  EXPECT_GT(products, 50);
  EXPECT_LT(products, 350);
}

/// An XPath expression and the same below the root of a tree.
struct Selection {
  std::string expression;
  std::string path;  // empty: the root
  std::size_t position;

  bool IsPosition() const { return expression.back() == ']'; }

  /// What the expression selects: all entries, or those at the position.
  std::vector<const XmlNode*> All(const XmlTree& tree) const {
    const bool named = tree.wellFormed && tree.root.name == "r" && tree.root.space.empty();
    if (!named) return {};
    if (path.empty()) return {&tree.root};
    if (!IsPosition()) return Select(tree.root, path);
    std::vector<const XmlNode*> sections = {&tree.root};
    if (path == "s/b") sections = Select(tree.root, "s");
    std::vector<const XmlNode*> nodes;
    for (const XmlNode* section : sections) {
      const std::vector<const XmlNode*> here = Select(*section, "b");
      if (here.size() >= position) nodes.push_back(here[position - 1]);
    }
    return nodes;
  }

  /// The one that the frame reads.
  const XmlNode* Node(const XmlTree& tree) const {
    if (!IsPosition()) return All(tree).empty() ? nullptr : All(tree).front();
    if (All(tree).empty()) return nullptr;
    const std::vector<ListEntry> entries = SelectList(tree.root, path);
    return position <= entries.size() ? entries[position - 1].node : nullptr;
  }
};

TEST_F(FrameReading, FindsTheSameTextsInOddDocuments) {
  const std::string documents[] = {
      "<r a='1'>x</r>",
      "<r a=''>  \n</r>",
      "<r><!-- c --></r>",
      "<r>a<!-- c -->b<![CDATA[<&]]>c<b>no</b>d</r>",
      "<r><b a='1'/><b/><c><b a='2'/></c></r>",
      "<r><b>1</b><b>2</b></r>",
      "<r>\n<s><b a='1'/></s><s/>\n<s><b a='2'/><b a='3'/></s></r>",
      "<!DOCTYPE r [<!ENTITY e 'one &f;'><!ENTITY f 'two'>]><r a='&e;'>&e; &amp; &f;</r>",
      "<!DOCTYPE r [<!ATTLIST r a CDATA 'default'>]><r/>",
      "<!DOCTYPE r [<!ENTITY e SYSTEM 'file:///etc/hostname'>]><r>&e;</r>",
      "<r a='&#65;&lt;\n\tb'>&#xE4;</r>",
      "<?xml version='1.0' encoding='ISO-8859-1'?><r a='\xC3\xA4'>\xC3\xA4</r>",
      "<?xml version='1.0' encoding='UTF-16'?><r>x</r>",
      "\xEF\xBB\xBF<r>x</r>",
      "<r xmlns:p='urn:p' p:a='1'><p:b/></r>",
      "<r p:a='1'/>",
      "<r",
      "",
      "\n",
      "\n<?xml version='1.0'?><r/>",
      "<r>\xE4</r>",
      "<r>" + std::string(300, ' ') + "</r>"};
  const Selection selections[] = {{"/r", "", 1},           {"/r/b", "b", 1},
                                  {"/r/b[2]", "b", 2},     {"/r/s/b", "s/b", 1},
                                  {"/r/s/b[2]", "s/b", 2}, {"/r/s/b[3]", "s/b", 3}};
  const auto chain = [](int entities, bool inText) {
    std::string text = "<!DOCTYPE r [<!ENTITY e0 'x'>";
    for (int i = 1; i <= entities; ++i) {
      text += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>";
    }
    const std::string last = "&e" + std::to_string(entities) + ";";
    return text + "]><r a='" + (inText ? "" : last) + "'>" + (inText ? last : "") + "</r>";
  };
  std::vector<std::string> all(std::begin(documents), std::end(documents));
  for (int entities = 15; entities < 45; ++entities) {
    all.push_back(chain(entities, true));
    all.push_back(chain(entities, false));
  }
  for (const std::string& text : all) {
    xmlSetStructuredErrorFunc(nullptr, [](auto...) {});
    TevModelParse::CXmlProto frame;
    const bool wellFormed = frame.ParseMemory(text);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    const XmlTree own = ParseXmlTree(text);
    EXPECT_EQ(wellFormed, own.wellFormed) << text;
    for (const Selection& selection : selections) {
      const std::vector<const XmlNode*> selected = selection.All(own);
      const XmlNode* node = selection.Node(own);
      EXPECT_EQ(frame.GetNodeCount(selection.expression), node == nullptr ? 0 : selected.size())
          << text << selection.expression;
      EXPECT_EQ(frame.GetNodeText(selection.expression, ""), node == nullptr ? "" : node->text)
          << text << selection.expression;
      EXPECT_EQ(frame.GetNodeProp(selection.expression, "a", ""),
                node == nullptr ? "" : node->Value("a"))
          << text << selection.expression;
    }
  }
}

TEST(XmlTree, ReportsTheFirstErrorThatMakesItNotWellFormed) {
  const XmlTree tree = ParseXmlTree("<r p:a='1'>\n</b>");
  EXPECT_FALSE(tree.wellFormed);
  EXPECT_EQ("Opening and ending tag mismatch: r line 1 and b", tree.problem);
  EXPECT_EQ(2, tree.problemPlace.line);
}

TEST(XmlTree, BoundsTextOfEntityNamedManyTimes) {
  std::string text = "<!DOCTYPE r [<!ENTITY e '" + std::string(100000, 'x') + "'>]><r a='";
  for (int i = 0; i < 101; ++i) text += "&e;";
  const XmlTree tree = ParseXmlTree(text + "'/>");
  EXPECT_EQ("", tree.root.Value("a"));
  ASSERT_EQ(1U, tree.tooLong.size());
  EXPECT_EQ("a", tree.tooLong[0].name);
  EXPECT_TRUE(tree.tooLong[0].isAttribute);
}

template <typename Error>
void Count(void* calls, Error*) {
  ++*static_cast<int*>(calls);
}

TEST(XmlTree, KeepsTheHostsErrorHandlerAndItsMessagesToItself) {
  int calls = 0;
  xmlSetStructuredErrorFunc(&calls, &Count);
  const xmlStructuredErrorFunc handler = xmlStructuredError;
  EXPECT_FALSE(ParseXmlTree("<r>").wellFormed);
  EXPECT_EQ(0, calls);
  EXPECT_TRUE(handler == xmlStructuredError);
  EXPECT_EQ(&calls, xmlStructuredErrorContext);
  xmlSetStructuredErrorFunc(nullptr, nullptr);
}

std::string Shown(const TextPlace& place) {
  return std::to_string(place.line) + ":" + std::to_string(place.column);
}

TEST(XmlTree, HasThePlaceOfEachElementAttributeAndText) {
  const XmlTree tree = ParseXmlTree(
      "\xEF\xBB\xBF<?xml version='1.0'?>\n"
      "<!DOCTYPE r [<!ENTITY e '<x a=\">\"/>'> <!-- <r> -->]>\n"
      "<!-- <r> --><r \xC3\xA4='1'>\n"
      "  <?pi <b> ?><![CDATA[ <b> ]]><b\n"
      "    a = '>'  p:q=\"/\" xmlns:p='urn:p'/>text\n"
      "</r>");
  ASSERT_TRUE(tree.wellFormed) << tree.problem;
  EXPECT_EQ("2:1", Shown(tree.doctypePlace));
  EXPECT_EQ("3:13", Shown(tree.root.place));
  EXPECT_EQ("3:16", Shown(tree.root.attributes.at(0).place));
  EXPECT_EQ("4:14", Shown(tree.root.textPlace));
  const XmlNode& b = tree.root.children.at(0);
  EXPECT_EQ("4:31", Shown(b.place));
  EXPECT_EQ("5:5", Shown(b.Attribute("a")->place));
  EXPECT_EQ("5:14", Shown(b.Attribute("q")->place));
  EXPECT_EQ("urn:p", b.Attribute("q")->space);
  EXPECT_EQ("0:0", Shown(b.textPlace));
}

TEST(SelectList, HasNoNodeForEntriesThatPositionsDoNotReach) {
  const XmlTree tree = ParseXmlTree("<r><s><b/></s>\n<s/>\n<s><b/><b a='1'/></s></r>");
  const std::vector<ListEntry> entries = SelectList(tree.root, "s/b");
  ASSERT_EQ(3U, entries.size());
  EXPECT_EQ(1, entries[0].node->place.line);
  EXPECT_EQ("1", entries[1].node->Value("a"));
  EXPECT_EQ(nullptr, entries[2].node);
  EXPECT_EQ(3, entries[2].section->place.line);
}

}  // namespace
