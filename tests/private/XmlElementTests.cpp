#include "src/private/XmlElement.h"

#include <gtest/gtest.h>

#include <string>

using TevModelParse::CXmlProto;
using TevModelParse::XmlElement;
using TevModelParse::XmlElements;

namespace {

class Element : public testing::Test {
 protected:
  XmlElement Root(const std::string& xml) {
    EXPECT_TRUE(document.ParseMemory(xml));
    return XmlElement(document, "/r");
  }

  /// "PATH=ATTRIBUTE " of each element of a list.
  static std::string Text(const XmlElements& list) {
    std::string text;
    for (const XmlElement& element : list) {
      text += element.Path() + "=" + element.Attribute("a", "none") + " ";
    }
    return text;
  }

  CXmlProto document;
};

TEST_F(Element, ReadsTextsAndNumbersOfItsChildren) {
  const XmlElement root = Root("<r><t>text</t><n>12</n><b/></r>");
  EXPECT_EQ("text", root.Text("t"));
  EXPECT_EQ("none", root.Text("b", "none"));
  EXPECT_EQ("", root.Text("missing"));
  EXPECT_EQ(12, root.Int("n", -1));
  EXPECT_EQ(-1, root.Int("b", -1));
}

TEST_F(Element, FlagIsTheNumberOneOnly) {
  const XmlElement root = Root("<r><a>1</a><b>2</b><c>true</c><d/><e>0</e><f>-1</f></r>");
  std::string set;
  for (const char* name : {"a", "b", "c", "d", "e", "f", "missing"}) {
    if (root.Flag(name)) set += name;
  }
  EXPECT_EQ("a", set);
}

TEST_F(Element, ReadsAttributesOfItsOwn) {
  const XmlElement root = Root("<r a='1' b=''><a>2</a></r>");
  EXPECT_EQ("1", root.Attribute("a"));
  EXPECT_EQ("", root.Attribute("b", "none"));
  EXPECT_EQ("none", root.Attribute("c", "none"));
}

TEST_F(Element, ChildHasTheLongerPathEvenWhenThereIsNone) {
  const XmlElement child = Root("<r/>").Child("x").Child("y");
  EXPECT_EQ("/r/x/y", child.Path());
  EXPECT_EQ("none", child.Text("z", "none"));
}

TEST_F(Element, ListHasEachElementWithItsPosition) {
  const XmlElements list = Root("<r><e a='1'/><x/><e/><e a='3'/></r>").Children("e");
  EXPECT_EQ(3, list.Count());
  EXPECT_EQ("/r/e[1]=1 /r/e[2]=none /r/e[3]=3 ", Text(list));
}

TEST_F(Element, ListOfNothingIsEmpty) {
  const XmlElements list = Root("<r/>").Children("e");
  EXPECT_EQ(0, list.Count());
  EXPECT_EQ("", Text(list));
}

TEST_F(Element, PositionsCountInsideEachParent) {
  const XmlElement root = Root("<r><s><e a='1'/><e a='2'/></s><s><e a='3'/></s></r>");
  EXPECT_EQ("/r/s/e[1]=1 /r/s/e[2]=2 /r/s/e[3]=none ", Text(root.Child("s").Children("e")));
}

}  // namespace
