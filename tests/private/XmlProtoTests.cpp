#include "src/private/XmlProto.h"

#include <libxml/xmlerror.h>

#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "src/private/FrameLog.h"
#include "tests/support/FrameTest.h"

using namespace TevModelParse;

namespace {

/// Collects what goes to libxml2's generic error function while it exists.
class ParserMessages {
 public:
  ParserMessages() { xmlSetGenericErrorFunc(&m_text, &ParserMessages::Append); }
  ~ParserMessages() { xmlSetGenericErrorFunc(nullptr, nullptr); }
  ParserMessages(const ParserMessages&) = delete;
  ParserMessages& operator=(const ParserMessages&) = delete;

  const std::string& Text() const { return m_text; }

 private:
  [[gnu::format(printf, 2, 3)]] static void Append(void* text, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    char message[1024] = {};
    std::vsnprintf(message, sizeof(message), format, arguments);
    va_end(arguments);
    *static_cast<std::string*>(text) += message;
  }

  std::string m_text;
};

CXmlProto& Parsed(CXmlProto& document, const std::string& text) {
  EXPECT_TRUE(document.ParseMemory(text));
  return document;
}

TEST(Xml, NeverParsedOrBrokenDocumentsHoldNothing) {
  CXmlProto document;
  EXPECT_EQ(0, document.GetNodeCount("/r"));
  EXPECT_TRUE(document.ParseMemory("<r a='1'>x</r>"));
  EXPECT_EQ(1, document.GetNodeCount("/r"));
  EXPECT_FALSE(document.ParseMemory("this is no xml"));
  EXPECT_EQ(0, document.GetNodeCount("/r"));
  EXPECT_EQ("none", document.GetNodeText("/r", "none"));
  EXPECT_EQ(7, document.GetNodeInt("/r", 7));
  EXPECT_EQ("none", document.GetNodeProp("/r", "a", "none"));
}

TEST(Xml, WithoutANameOfItsFileGivesTheParsersMessageWithTheLine) {
  const ParserMessages messages;
  CXmlProto document;
  EXPECT_FALSE(document.ParseMemory("this is no xml"));
  EXPECT_EQ(":1: Start tag expected, '<' not found\n", messages.Text());
}

TEST(Xml, CountsAllMatchesAndReadsTheFirst) {
  CXmlProto document;
  Parsed(document, "<r><e a='1'>one</e><e a='2'>two</e><e a='3'>three</e></r>");
  EXPECT_EQ(3, document.GetNodeCount("/r/e"));
  EXPECT_EQ("one", document.GetNodeText("/r/e", ""));
  EXPECT_EQ("1", document.GetNodeProp("/r/e", "a", ""));
  EXPECT_EQ("two", document.GetNodeText("/r/e[2]", ""));
}

TEST(Xml, ElementWithoutTextOrWithWhiteSpaceOnlyReadsAsTheDefault) {
  CXmlProto document;
  for (const char* text : {"<r><e/></r>", "<r><e></e></r>", "<r><e> \t\r\n </e></r>",
                           "<r><e><![CDATA[  ]]></e></r>", "<r><e>&#32;&#10;</e></r>"}) {
    Parsed(document, text);
    EXPECT_EQ("none", document.GetNodeText("/r/e", "none")) << text;
    EXPECT_EQ(-3, document.GetNodeInt("/r/e", -3)) << text;
  }
}

TEST(Xml, SurroundingBlanksOfATextStay) {
  CXmlProto document;
  Parsed(document, "<r><e> 7 </e></r>");
  EXPECT_EQ(" 7 ", document.GetNodeText("/r/e", ""));
  EXPECT_EQ(7, document.GetNodeInt("/r/e", 0));
}

TEST(Xml, IntegersAreTheLeadingDigits) {
  const std::pair<const char*, int> cases[] = {{"abc", 0}, {"12x", 12}, {"-1", -1},
                                               {"+4", 4},  {"0x10", 0}, {"3.9", 3}};
  CXmlProto document;
  for (const auto& one : cases) {
    Parsed(document, std::string("<r>") + one.first + "</r>");
    EXPECT_EQ(one.second, document.GetNodeInt("/r", 99)) << one.first;
  }
  Parsed(document, "<r/>");
  EXPECT_EQ(99, document.GetNodeInt("/r", 99));
}

TEST(Xml, AttributeThatIsThereAndEmptyReadsAsEmpty) {
  CXmlProto document;
  Parsed(document, "<r a=''/>");
  EXPECT_EQ("", document.GetNodeProp("/r", "a", "none"));
  EXPECT_EQ("none", document.GetNodeProp("/r", "b", "none"));
  EXPECT_EQ("none", document.GetNodeProp("/x", "a", "none"));
}

TEST(Xml, TextJoinsAllThatIsDirectlyInsideTheElement) {
  CXmlProto document;
  Parsed(document, "<r>one<!-- cut --><b>inner</b><![CDATA[ <two> ]]>&amp;&#65;</r>");
  EXPECT_EQ("one <two> &A", document.GetNodeText("/r", ""));
}

TEST(Xml, EntitiesOfTheFileAreSubstituted) {
  CXmlProto document;
  Parsed(document, "<!DOCTYPE r [<!ENTITY n 'North'>]><r a='&n;!'>&n; Harbour</r>");
  EXPECT_EQ("North Harbour", document.GetNodeText("/r", ""));
  EXPECT_EQ("North!", document.GetNodeProp("/r", "a", ""));
}

TEST(Xml, BrokenExpressionsMatchNothing) {
  CXmlProto document;
  Parsed(document, "<r>x</r>");
  EXPECT_EQ(0, document.GetNodeCount("/r["));
  EXPECT_EQ("none", document.GetNodeText("count(/r)", "none"));
  EXPECT_EQ("none", document.GetNodeProp("]", "a", "none"));
}

TEST(Xml, ByteOrderMarkIsNoContentAndInvalidUtf8IsNoXml) {
  CXmlProto document;
  EXPECT_TRUE(document.ParseMemory("\xef\xbb\xbf<r>x</r>"));
  EXPECT_EQ("x", document.GetNodeText("/r", ""));
  EXPECT_FALSE(document.ParseMemory("<r>\xff\xfe</r>"));
}

TEST(Xml, EntityBombsReadAsNothing) {
  std::string nested = "<!DOCTYPE r [<!ENTITY a0 'lol'>";
  for (int i = 1; i < 10; ++i) {
    nested += "<!ENTITY a" + std::to_string(i) + " '";
    for (int k = 0; k < 10; ++k) nested += "&a" + std::to_string(i - 1) + ";";
    nested += "'>";
  }
  CXmlProto document;
  document.ParseMemory(nested + "]><r a='&a9;'>&a9;</r>");
  EXPECT_EQ("none", document.GetNodeText("/r", "none"));
  EXPECT_EQ("none", document.GetNodeProp("/r", "a", "none"));

  // One long entity named many times: the parser accepts it, and the text would be gigabytes.
  std::string names;
  for (int i = 0; i < 40000; ++i) names += "&a;";
  const std::string wide = "<!DOCTYPE r [<!ENTITY a '" + std::string(100000, 'x') + "'>]>";
  Parsed(document, wide + "<r>" + names + "</r>");
  EXPECT_EQ("none", document.GetNodeText("/r", "none"));
  Parsed(document, wide + "<r a='" + names + "'/>");
  EXPECT_EQ("none", document.GetNodeProp("/r", "a", "none"));
}

TEST(Xml, TextOfBlanksOfAnyKindAloneReadsAsTheDefault) {
  CXmlProto document;
  for (const std::string blank : {" ", "&#9;", "&#13;", "&#10;", " &#9;&#13;&#10; "}) {
    Parsed(document, "<r>" + blank + "</r>");
    EXPECT_EQ("none", document.GetNodeText("/r", "none")) << blank;
    Parsed(document, "<r>" + blank + "x</r>");
    EXPECT_NE("none", document.GetNodeText("/r", "none")) << blank;
  }
}

TEST(Xml, TextFromEntitiesIsReadUpToTenMillionBytes) {
  const std::string entity = "<!DOCTYPE r [<!ENTITY a '" + std::string(100000, 'x') + "'>]>";
  std::string hundred;
  for (int i = 0; i < 100; ++i) hundred += "&a;";
  CXmlProto document;
  Parsed(document, entity + "<r>" + hundred + "</r>");
  EXPECT_EQ(10000000U, document.GetNodeText("/r", "none").size());
  Parsed(document, entity + "<r>" + hundred + "x</r>");
  EXPECT_EQ("none", document.GetNodeText("/r", "none"));
}

std::string Repeated(const std::string& piece, std::size_t times) {
  std::string text;
  text.reserve(piece.size() * times);
  for (std::size_t i = 0; i < times; ++i) text += piece;
  return text;
}

/// An element and an attribute that are `times` the entity of `bytes` bytes, in lines 2 and 3.
std::string EntityNamedOften(std::size_t bytes, std::size_t times) {
  const std::string names = Repeated("&a;", times);
  return "<!DOCTYPE r [<!ENTITY a '" + std::string(bytes, 'x') + "'>]><r>\n<e>" + names +
         "</e>\n<e a='" + names + "'/></r>";
}

TEST(Xml, TooLongTextAndAttributeAreNamedInAMessage) {
  CXmlProto document;
  const ParserMessages messages;
  ASSERT_TRUE(document.ParseMemory(EntityNamedOften(100'000, 101), "m/a.xml"));
  EXPECT_EQ("none", document.GetNodeText("/r/e", "none"));
  EXPECT_EQ("none", document.GetNodeProp("/r/e[2]", "a", "none"));
  EXPECT_EQ(
      "m/a.xml:2: the text of <e> is longer than 10000000 bytes: it reads as absent\n"
      "m/a.xml:3: the attribute a of <e> is longer than 10000000 bytes: it reads as absent\n",
      messages.Text());
}

TEST(Xml, TextOfTooManyPiecesIsNamedInAMessage) {
  CXmlProto document;
  const ParserMessages messages;
  ASSERT_TRUE(document.ParseMemory(EntityNamedOften(8, 60'000), "m/a.xml"));
  EXPECT_EQ("none", document.GetNodeText("/r/e", "none"));
  EXPECT_EQ("none", document.GetNodeProp("/r/e[2]", "a", "none"));
  EXPECT_EQ(
      "m/a.xml:2: the text of <e> is of too many pieces to be put together: it reads as absent\n"
      "m/a.xml:3: the attribute a of <e> is of too many pieces to be put together: it reads as "
      "absent\n",
      messages.Text());
}

TEST(Xml, TooLongTextBeyondLine65535IsNamedWithoutLine) {
  CXmlProto document;
  const ParserMessages messages;
  const std::string lines(70'000, '\n');
  const std::string half(5'000'001, 'a');
  ASSERT_TRUE(document.ParseMemory("<r>" + lines + "<e>" + half + "<!---->" + half + "</e>" +
                                       Repeated("<f>end</f>\n", 100) + "</r>",
                                   "a.xml"));
  EXPECT_EQ("none", document.GetNodeText("/r/e", "none"));
  EXPECT_EQ("a.xml: the text of <e> is longer than 10000000 bytes: it reads as absent\n",
            messages.Text());
}

/// Keeps what the host's structured error function receives.
struct ReceivedError {
  std::string file;
  int line = 0;
  int level = 0;
  std::string message;

  template <typename Error>
  static void Receive(void* self, Error* error) {
    auto& received = *static_cast<ReceivedError*>(self);
    received.file = error->file == nullptr ? "" : error->file;
    received.line = error->line;
    received.level = error->level;
    received.message = error->message;
  }
};

TEST(Xml, TooLongTextIsReportedToTheHostsStructuredErrorFunctionAlone) {
  CXmlProto document;
  const ParserMessages messages;
  ASSERT_TRUE(document.ParseMemory(EntityNamedOften(100'000, 101), "m/a.xml"));
  ReceivedError received;
  xmlSetStructuredErrorFunc(&received, &ReceivedError::Receive);
  EXPECT_EQ("none", document.GetNodeText("/r/e", "none"));
  xmlSetStructuredErrorFunc(nullptr, nullptr);
  EXPECT_EQ("m/a.xml", received.file);
  EXPECT_EQ(2, received.line);
  EXPECT_EQ(XML_ERR_ERROR, received.level);
  EXPECT_EQ("the text of <e> is longer than 10000000 bytes: it reads as absent\n",
            received.message);
  EXPECT_EQ("", messages.Text());
}

TEST(Xml, CommentsAndInstructionsDoNotLengthenTheTextAroundThem) {
  CXmlProto document;
  const ParserMessages messages;
  const std::string sixMegabytes = std::string(6'000'000, 'c');
  Parsed(document, "<r>a<!--" + sixMegabytes + "-->b<?p " + sixMegabytes + "?>c</r>");
  EXPECT_EQ("abc", document.GetNodeText("/r", "none"));
  EXPECT_EQ("", messages.Text());
}

TEST(Xml, TextOfManyPiecesThatIsQuickToReadIsRead) {
  CXmlProto document;
  const ParserMessages messages;
  Parsed(document, EntityNamedOften(10, 23'000));
  EXPECT_EQ(230'000U, document.GetNodeText("/r/e", "none").size());
  EXPECT_EQ(230'000U, document.GetNodeProp("/r/e[2]", "a", "none").size());
  Parsed(document, "<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY b '" + Repeated("&a;", 1000) + "'>]><r>" +
                       std::string(1'000'000, 'x') + Repeated("&b;", 100) + "</r>");
  EXPECT_EQ(1'100'000U, document.GetNodeText("/r", "none").size());
  Parsed(document, "<r>" + std::string(1'000'000, 'x') + Repeated("<e/>", 50'000) + "</r>");
  EXPECT_EQ(1'000'000U, document.GetNodeText("/r", "none").size());
  EXPECT_EQ("", messages.Text());
}

TEST(Xml, TextIsReadUpToTenThousandMillionStepsOfPuttingItTogether) {
  // Each node takes 1,000 steps, and a piece those for going through the text so far and its own:
  // the references and what they name 9,999,015,000, so that the last piece has 985,000.
  const std::string before = "<!DOCTYPE r [<!ENTITY a '0123456789" + Repeated("<i/>", 9992) +
                             "'>]><r><e>" + Repeated("&a;", 1000) + std::string(974'000, 'x');
  CXmlProto document;
  const ParserMessages messages;
  Parsed(document, before + "</e></r>");
  EXPECT_EQ(984'000U, document.GetNodeText("/r/e", "none").size());
  EXPECT_EQ("", messages.Text());
  Parsed(document, before + "x</e></r>");
  EXPECT_EQ("none", document.GetNodeText("/r/e", "none"));
}

/// Short elements of `bytes` bytes or more, so that the file does not end with what is before them.
std::string ShortElements(std::size_t bytes) {
  const std::string element = "<f>end</f>\n";
  std::string elements;
  while (elements.size() < bytes) elements += element;
  return elements;
}

TEST(Xml, TextBeyondTenMillionBytesReadsAsTheDefault) {
  const std::string half(5'000'000, 'a');
  const std::string behind = "</e>" + ShortElements(1000) + "</r>";
  CXmlProto document;
  for (const char* between : {"", "<!---->", "<![CDATA[]]>"}) {
    Parsed(document, "<r><e>" + half + between + half + behind);
    EXPECT_EQ(10'000'000U, document.GetNodeText("/r/e", "none").size()) << between;
    Parsed(document, "<r><e>" + half + between + half + "a" + behind);
    EXPECT_EQ("none", document.GetNodeText("/r/e", "none")) << between;
    EXPECT_EQ("end", document.GetNodeText("/r/f", "none")) << between;
  }
}

TEST(Xml, LongerAttributeSectionOrCommentThanTenMillionBytesIsRefused) {
  CXmlProto document;
  const std::string most(10'000'000, 'a');
  const std::string behind = ShortElements(1000) + "</r>";
  const std::pair<std::string, std::string> around[] = {
      {"<r><e a='", "'/>"}, {"<r><![CDATA[", "]]>"}, {"<!--", "--><r>"}};
  for (const auto& [before, after] : around) {
    EXPECT_TRUE(document.ParseMemory(before + most + after + behind)) << before;
    EXPECT_FALSE(document.ParseMemory(before + most + "a" + after + behind)) << before;
  }
}

TEST(Xml, LongerTextInPiecesThanTenMillionBytesCountsAsOutOfMemory) {
  CXmlProto document;
  std::string text;
  while (text.size() <= 10'000'000) text += "\xC3\xA9";
  const std::string behind = ShortElements(1000) + "</r>";
  EXPECT_THROW(document.ParseMemory("<r><e>" + text + "</e>" + behind), std::bad_alloc);
  EXPECT_EQ(0, document.GetNodeCount("/r"));
}

TEST(Xml, LargerFileThanTenMillionBytesIsRefusedForALongTextAtItsEnd) {
  CXmlProto document;
  const std::string text(1000, 'a');
  EXPECT_TRUE(document.ParseMemory("<r>" + ShortElements(9'900'000) + text + "</r>"));
  EXPECT_TRUE(document.ParseMemory("<r>" + ShortElements(20'000'000) + "</r>"));
  EXPECT_FALSE(document.ParseMemory("<r>" + ShortElements(10'000'000) + text + "</r>"));
  EXPECT_EQ(0, document.GetNodeCount("/r"));
}

TEST(Xml, DocumentsDeeperThanTheParsersLimitReadAsEmpty) {
  std::string deep;
  for (int i = 0; i < 300; ++i) deep += "<e>";
  CXmlProto document;
  EXPECT_FALSE(document.ParseMemory(deep));
  EXPECT_EQ(0, document.GetNodeCount("/e"));
}

class WholeFile : public FrameTest {
 protected:
  std::string content = "untouched";
};

TEST_F(WholeFile, LosesItsTrailingLineFeedsOnly) {
  const std::pair<std::string, std::string> cases[] = {
      {"word\n\n\n", "word"}, {"word\r\n", "word\r"},
      {"\n\n", "\n\n"},       {"\n a \n b\n", "\n a \n b"},
      {"word \n", "word "},   {std::string("a\0b\n", 4), std::string("a\0b", 3)}};
  for (const auto& one : cases) {
    EXPECT_TRUE(ReadWholeFile(content, tree.Write("f.xml", one.first), ""));
    EXPECT_EQ(one.second, content);
  }
}

TEST_F(WholeFile, MissingOrEmptyIsReplacedByTheDataFileBesideIt) {
  tree.Write("m/Plugin.data", "data");
  const std::string path = tree.Write("m/Plugin.xml", "");
  EXPECT_TRUE(ReadWholeFile(content, path, ""));
  EXPECT_EQ("data", content);
  tree.Remove("m/Plugin.xml");
  content.clear();
  EXPECT_TRUE(ReadWholeFile(content, path, ""));
  EXPECT_EQ("data", content);
}

TEST_F(WholeFile, FallbackKeepsANameWithoutExtensionAndCutsTheLastOneOnly) {
  tree.Write("m/name.data", "whole");
  tree.Write("m/a.b.data", "stem");
  EXPECT_TRUE(ReadWholeFile(content, tree.ExeDirectory() + "../m/name", ""));
  EXPECT_EQ("whole", content);
  EXPECT_TRUE(ReadWholeFile(content, tree.ExeDirectory() + "../m/a.b.xml", ""));
  EXPECT_EQ("stem", content);
}

TEST_F(WholeFile, OfTwoHundredMegabytesIsReadWholeAndTooLargeForTheParser) {
  const std::string element = "<e>" + std::string(1 << 20, 'x') + "</e>";
  std::string text = "<r>";
  for (int i = 0; i < 200; ++i) text += element;
  text += "</r>";
  const std::string path = tree.Write("big.xml", text);
  ASSERT_TRUE(ReadWholeFile(content, path, ""));
  EXPECT_EQ(text.size(), content.size());
  CXmlProto document;
  EXPECT_FALSE(document.ParseMemory(content));
  EXPECT_EQ(0, document.GetNodeCount("/r/e"));
}

TEST_F(WholeFile, DirectoryCountsAsNotOpened) {
  tree.Write("m/Dir.data", "data");
  tree.Write("m/Dir.xml/inside", "x");
  EXPECT_TRUE(ReadWholeFile(content, tree.ExeDirectory() + "../m/Dir.xml", ""));
  EXPECT_EQ("data", content);
}

TEST_F(WholeFile, WithoutAnyReadableFileContentIsUntouched) {
  tree.Write("m/Plugin.data", "");
  EXPECT_FALSE(ReadWholeFile(content, tree.Write("m/Plugin.xml", ""), ""));
  EXPECT_FALSE(ReadWholeFile(content, "no-such-file-anywhere.xml", ""));
  EXPECT_FALSE(ReadWholeFile(content, "", ""));
  EXPECT_EQ("untouched", content);
}

TEST_F(WholeFile, FileNameWithoutFolderHasNoFallback) {
  const std::string name = "tev-bare-name";
  std::filesystem::create_directory(name + ".xml");
  const std::vector<std::string> others = {name + ".data", name + ".xml.data",
                                           name + ".xml/" + name + ".data"};
  for (const std::string& other : others) std::ofstream(other) << "data";
  EXPECT_FALSE(ReadWholeFile(content, name + ".xml", ""));
  EXPECT_EQ("untouched", content);
  for (const std::string& other : others) std::filesystem::remove(other);
  std::filesystem::remove(name + ".xml");
}

TEST_F(WholeFile, AlternativeTakesTheFallbacksPlace) {
  tree.Write("m/Plugin.data", "data");
  const std::string other = tree.Write("m/other.txt", "other");
  EXPECT_TRUE(ReadWholeFile(content, tree.ExeDirectory() + "../m/Plugin.xml", other));
  EXPECT_EQ("other", content);
  EXPECT_FALSE(ReadWholeFile(content, tree.ExeDirectory() + "../m/Plugin.xml", other + "x"));
}

TEST_F(WholeFile, AlternativeIsNotReadWhileTheFileCanBe) {
  const std::string other = tree.Write("m/other.txt", "other");
  EXPECT_TRUE(ReadWholeFile(content, tree.Write("m/Plugin.xml", "own"), other));
  EXPECT_EQ("own", content);
}

TEST_F(WholeFile, ThatIsNotWellFormedIsNamedWithItsLineInTheParserMessage) {
  const std::string path = tree.Write("m/Plugin.xml", "<r>\n<a></r>");
  const ParserMessages messages;
  ASSERT_NE(nullptr, ReadDocument(path));
  EXPECT_EQ(path + ":2: Opening and ending tag mismatch: a line 2 and r\n" + path +
                ":2: Premature end of data in tag r line 1\n",
            messages.Text());
}

TEST_F(WholeFile, ThatStandsInIsTheOneNamedInTheParserMessage) {
  const std::string path = tree.Write("m/Plugin.xml", "");
  const std::string standIn = tree.Write("m/Plugin.data", "<r>");
  const ParserMessages messages;
  ASSERT_NE(nullptr, ReadDocument(path));
  EXPECT_EQ(standIn + ":1: Premature end of data in tag r line 1\n", messages.Text());
}

TEST(SourceOfALogLine, BeginsAtTheLastFolderNamedSrc) {
  using PluginFrame::LogSource;
  EXPECT_STREQ("..\\..\\src\\private\\A.cpp", LogSource("/src/x/src/private/A.cpp").c_str());
  EXPECT_STREQ("..\\..\\src\\A.cpp", LogSource("C:\\src-x\\src\\A.cpp").c_str());
  EXPECT_STREQ("..\\..\\src\\A.cpp", LogSource("src/A.cpp").c_str());
}

TEST(SourceOfALogLine, IsTheWholePathWithoutAFolderNamedSrc) {
  EXPECT_STREQ("..\\..\\lib\\xsrc\\A.cpp", PluginFrame::LogSource("lib/xsrc/A.cpp").c_str());
}

}  // namespace
