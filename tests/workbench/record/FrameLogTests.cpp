// Tests the parser of the frame's log with lines that the frame really logs. When a text changes in
// the frame or in the parser alone, a test fails and names the row.

#include "workbench/record/FrameLog.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <stdexcept>

#include "sdk/frame/PluginFrame.h"
#include "src/PluginFrame/PluginManager.h"
#include "tests/support/FrameTest.h"

using PluginFrame::CPluginManager;
using testing::Invoke;
using testing::Return;
using testing::SetArgReferee;
using testing::Throw;

namespace {

/// `text` with each `what` replaced.
std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t place = text.find(what); place != std::string::npos;
       place = text.find(what, place + by.size())) {
    text.replace(place, what.size(), by);
  }
  return text;
}

/// The name of an event's kind, and all its fields that have a value.
std::string Describe(const FrameEvent& event) {
  std::string text;
  for (const FrameLogRow& row : FrameLogRows()) {
    if (row.kind == event.kind) text = row.name;
  }
  if (!event.plugin.empty()) text += " plugin=" + event.plugin;
  if (!event.path.empty()) text += " path=" + event.path;
  if (!event.reason.empty()) text += " reason=" + event.reason;
  if (event.milliseconds != -1) text += " ms=" + std::to_string(event.milliseconds);
  if (event.number != -1) text += " number=" + std::to_string(event.number);
  return text;
}

/// The events that the parser makes of all lines, in their order.
std::string AllEvents() {
  std::string found;
  for (const LogLine& line : Log::Instance().Lines()) {
    const auto event = ParseFrameLog(line.level, line.module, line.whole);
    if (event) found += Describe(*event) + "\n";
  }
  return found;
}

class FrameLog : public FrameEntriesTest {
 protected:
  /// For each row the event of the first line that matches it; the product's folder becomes "ROOT".
  std::string FirstEvents() const {
    const std::string bin = tree.ExeDirectory();
    const std::string root = bin.substr(0, bin.size() - std::string("bin/").size());
    const std::vector<LogLine> lines = log.Lines();
    std::string found;
    for (const FrameLogRow& row : FrameLogRows()) {
      const auto line = std::find_if(lines.begin(), lines.end(), [&](const LogLine& one) {
        return MatchFrameLog(row, one.level, one.module, one.whole).has_value();
      });
      if (line == lines.end()) {
        found += std::string(row.name) + " matches no line: " + row.texts.front() + "\n";
        continue;
      }
      const auto event = ParseFrameLog(line->level, line->module, line->whole);
      found += Replaced(event ? Describe(*event) : "no event", root, "ROOT/") + "\n";
    }
    return found;
  }

  void FailedInits() {
    EXPECT_CALL(seam.platform, Init)
        .WillOnce(Return(5))
        .WillOnce(Throw(std::runtime_error("no disk")))
        .WillOnce(Throw(7))
        .WillRepeatedly(Invoke([this] {
          seam.now += 3;
          return 0;
        }));
    for (int i = 0; i < 4; ++i) Frame_Init();  // the last one finds no product
  }

  void UnreadableProducts() {
    tree.Product("");
    tree.Write("Product.xml", "<ProductDescription/>");
    CPluginManager().Init();  // a product without a version
    tree.Product("");
    tree.Remove("bin/META_INFO/Portal.xml");
    CPluginManager().Init();
  }

  void WriteProduct() {
    tree.Product(
        "a.good: b.false: c.throws: d.throws_number: e.no_init: f.missing: g.stays: h.throws: "
        "i.throws_number: j.no_uninit: odd:");
    tree.Write("bin/META_INFO/odd/odd.xml", "<Plugin><Type>7</Type><ID>odd</ID></Plugin>");
    tree.Write("ProductAddons.xml", "<AddonList/>");
    tree.Write("ProductTools.xml", "<ToolList/>");
    tree.Write("bin/TevAddons/InstalledProducts.xml",
               "<InstalledProductsDescription><Addons><Addon ID='Missing'/><Addon ID='Gap'/>"
               "<Addon ID='Odd'/></Addons><Tools><Tool ID='Lost'/></Tools>"
               "</InstalledProductsDescription>");
    const auto addon = [this](const std::string& id, const std::string& plugin) {
      tree.Write("bin/TevAddons/" + id + "/" + id + ".xml",
                 "<AddonDescription><ID>" + id + "</ID><Plugins><Plugin ID='" + plugin +
                     "' Category='server'/></Plugins></AddonDescription>");
    };
    addon("Gap", "nowhere");
    addon("Odd", "odd");
  }

  void WriteLibraries() {
    seam.libraries["a.good"].init = [this] {
      seam.now += 20;
      return true;
    };
    seam.libraries["a.good"].uninit = [this] {
      seam.now += 7;
      return true;
    };
    seam.libraries["b.false"].init = [this] {
      seam.now += 5;
      return false;
    };
    seam.libraries["c.throws"].init = []() -> bool { throw std::runtime_error("no [port] left"); };
    seam.libraries["d.throws_number"].init = []() -> bool { throw 7; };
    seam.libraries["e.no_init"].hasInit = false;
    seam.libraries["g.stays"].uninit = [] { return false; };
    seam.libraries["h.throws"].uninit = []() -> bool { throw std::runtime_error("still busy"); };
    seam.libraries["i.throws_number"].uninit = []() -> bool { throw 7; };
    seam.libraries["j.no_uninit"].hasUnInit = false;
  }

  void WholeRun() {
    WriteProduct();
    WriteLibraries();
    ON_CALL(seam.platform, SetProductModel).WillByDefault(Invoke([this](const ProductModel&) {
      seam.now += 40;
      return 1;
    }));
    ON_CALL(seam.platform, Start).WillByDefault(Invoke([this](KPXStartFinishFn finished) {
      seam.now += 12;
      Seam::CallBack(finished, nullptr);
      return 0;
    }));
    const auto takes = [this](std::uint64_t milliseconds) {
      return Invoke([this, milliseconds] {
        seam.now += milliseconds;
        return 0;
      });
    };
    ON_CALL(seam.platform, PreUnInit).WillByDefault(takes(1));
    ON_CALL(seam.platform, Stop).WillByDefault(takes(4));
    ON_CALL(seam.platform, UnInit).WillByDefault(takes(6));
    Frame_Init();
    Frame_Start();
    Frame_Stop();
    Frame_UnInit();
  }

  void StopsAndStartsThatAreRefused() {
    tree.Product("a:");
    seam.libraries["a"];
    CPluginManager manager;
    manager.Init();
    ON_CALL(seam.threads, Grant).WillByDefault(Return(0U));
    manager.Start(nullptr);
    manager.Uninit();
    ON_CALL(seam.threads, Grant).WillByDefault(Return(1U));
    ON_CALL(seam.lpc, UnInit).WillByDefault(Return(1));
    manager.Uninit();
    ON_CALL(seam.lpc, UnInit).WillByDefault(Return(0));
  }

  void AStartThatRunsOutOfMemory() {
    tree.Product("a:");
    CPluginManager manager;
    manager.Init();
    seam.libraries["a"].onLoad = [] { throw std::bad_alloc(); };
    manager.Start(nullptr);
    seam.libraries["a"].onLoad = [] {};
  }

  void APoolThatRefusesTasks() {
    tree.Product("z:");
    CPluginManager manager;
    manager.Init();
    EXPECT_CALL(seam.threads, Post)
        .WillOnce(Return(false))
        .WillOnce(Return(false))
        .WillRepeatedly(Return(true));
    manager.Start(nullptr);
    manager.Uninit();
  }

  void ASubPlatformWithoutAnId() {
    tree.Product("");
    tree.Write(
        "Product.xml",
        "<ProductDescription><SubPlatforms><SubPlatform/></SubPlatforms></ProductDescription>");
    CPluginManager manager;
    manager.Init();
    manager.Start(nullptr);
    seam.onSleep = [this, sleeps = 0]() mutable {
      seam.RunTasks();
      if (++sleeps == 3) throw std::runtime_error("it waits for ever");
    };
    EXPECT_THROW(manager.Uninit(), std::runtime_error);
    seam.onSleep = [this] { seam.RunTasks(); };
  }
};

TEST_F(FrameLog, EveryRowMatchesALineThatTheFrameLogs) {
  // Several products in one process: the framework is up and down as each needs it.
  ON_CALL(seam.lpc, Init).WillByDefault(Return(0));
  ON_CALL(seam.lpc, UnInit).WillByDefault(Return(0));
  FailedInits();
  UnreadableProducts();
  WholeRun();
  StopsAndStartsThatAreRefused();
  AStartThatRunsOutOfMemory();
  APoolThatRefusesTasks();
  ASubPlatformWithoutAnId();
  EXPECT_EQ(
      "kLoadTaskBegin plugin=a.good\n"
      "kLoadBegin path=ROOT/bin/a.good.dll\n"
      "kLoadSucceeded path=ROOT/bin/a.good.dll\n"
      "kLoadFailed path=ROOT/bin/f.missing.dll number=126\n"
      "kInitBegin plugin=a.good\n"
      "kInitSucceeded plugin=a.good ms=20\n"
      "kInitFailed plugin=b.false ms=5\n"
      "kInitThrew reason=no [port] left\n"
      "kInitThrewNoException\n"
      "kInitMissing\n"
      "kStartCounted plugin=a.good number=1\n"
      "kStartFailedCounted plugin=b.false number=2\n"
      "kStartAbandoned plugin=a reason=std::bad_alloc number=1\n"
      "kNotLoadedCounted plugin=f.missing number=6\n"
      "kLoadSkipped plugin=z reason=the thread pool refused its task number=1\n"
      "kUnloadTaskBegin plugin=a.good\n"
      "kNamelessNotCounted\n"
      "kUnInitBegin plugin=a.good\n"
      "kUnInitEnd plugin=a.good ms=7\n"
      "kUnInitThrew reason=still busy\n"
      "kUnInitThrewNoException\n"
      "kUnInitMissing\n"
      "kFreeBegin\n"
      "kFreeEnd\n"
      "kStopCounted plugin=a.good number=1\n"
      "kStopRefusedCounted plugin=g.stays number=7\n"
      "kNothingToStopCounted plugin=f.missing number=6\n"
      "kUnloadSkipped plugin=z reason=the thread pool refused its task number=1\n"
      "kPlatformInitialised ms=3\n"
      "kPlatformInitFailed\n"
      "kManagerInitBegin\n"
      "kManagerInitEnd ms=40\n"
      "kManagerInitFailed\n"
      "kFrameInitEnd ms=43\n"
      "kInitRefused reason=ReadServerModel failed.Get product model param failed\n"
      "kStepThrew reason=no disk\n"
      "kStepThrewNoException\n"
      "kRequiredFileUnreadable path=ROOT/bin/../Product.xml\n"
      "kRequiredFileUnreadable path=ROOT/bin/META_INFO/Portal.xml\n"
      "kOptionalFileUnreadable path=ROOT/bin/TevAddons/InstalledProducts.xml\n"
      "kPluginDropped plugin=nowhere path=ROOT/bin/META_INFO/nowhere/nowhere.xml\n"
      "kTypeUnknown path=ROOT/bin/META_INFO/odd/odd.xml\n"
      "kTypeUnknown path=ROOT/bin/META_INFO/odd/odd.xml\n"
      "kAddonDropped plugin=Gap\n"
      "kAddonUnreadable path=ROOT/bin/TevAddons/Missing/Missing.xml\n"
      "kAddonIncompatible plugin=Gap\n"
      "kToolUnreadable path=ROOT/bin/TevAddons/Lost/Lost.xml\n"
      "kProductVersionMissing\n"
      "kFrameStartBegin\n"
      "kPlatformStartBegin\n"
      "kPlatformStarted ms=12\n"
      "kFrameStartEnd\n"
      "kPluginsStartBegin\n"
      "kPluginsStartEnd ms=225\n"
      "kNoPoolForStart\n"
      "kStartCallbackEnd\n"
      "kFrameStopBegin\n"
      "kPlatformPrepareBegin\n"
      "kPlatformPrepareEnd ms=1\n"
      "kLpcStopFailed\n"
      "kNoPoolForStop\n"
      "kPluginsStopBegin\n"
      "kPluginsStopEnd ms=207\n"
      "kPlatformStopBegin\n"
      "kPlatformStopEnd ms=4\n"
      "kFrameStopEnd ms=212\n"
      "kFrameUnInitBegin\n"
      "kFrameUnInitEnd ms=6\n",
      FirstEvents());
}

/// Names that contain parts of the texts around them.
const char* const kNames[] = {"a] cost time [1]ms",
                              "a] cost time [1] ms.",
                              "a] SinglePluginLoad Begin.",
                              "a] SinglePluginLoad End. count[1].",
                              "[a] SinglePluginLoad End. count[1].",
                              "[a] SinglePluginUnload End. count[1].",
                              "a] SinglePluginLoad End (x). count[1].",
                              "a load failed, InitFailed, count[1].",
                              "a is null, UninitSuccess, count[1].",
                              "a not loaded (x), count[1].",
                              "a not unloaded (x), count[1].",
                              "a.dll,errorcode=5",
                              "Init begin.[a]",
                              "[",
                              "]",
                              "{plugin}",
                              "two\nlines\t",
                              "\xff\xfe"};

/// A product with one plugin, which has one of these names.
class FrameLogNames : public FrameTest, public testing::WithParamInterface<std::size_t> {
 protected:
  void Init(CPluginManager& manager, const std::string& id) {
    tree.Product("");
    PluginDescription plugin;
    plugin.ID = id;
    plugin.Path = "/addon/";
    AddonModel addon;
    addon.ServerPluginDescriptions = {plugin};
    EXPECT_CALL(seam.platform, GetInstalledAddonModel)
        .WillRepeatedly(SetArgReferee<0>(std::vector<AddonModel>{addon}));
    ASSERT_TRUE(manager.Init());
    Log::Instance().Clear();
  }

  const std::string name = kNames[GetParam()];
};

TEST_P(FrameLogNames, AreReadAsTheyAreFromARun) {
  seam.libraries[name].init = [this] {
    seam.now += 4;
    return true;
  };
  CPluginManager manager;
  Init(manager, name);
  manager.Start(nullptr);
  manager.Uninit();
  const std::string plugin = " plugin=" + name;
  const std::string path = " path=/addon/" + name + ".dll\n";
  EXPECT_EQ("kPluginsStartBegin\nkLoadTaskBegin" + plugin + "\nkLoadBegin" + path +
                "kLoadSucceeded" + path + "kInitBegin" + plugin + "\nkInitSucceeded" + plugin +
                " ms=4\nkStartCounted" + plugin +
                " number=1\nkPluginsStartEnd ms=204\nkPluginsStopBegin\nkUnloadTaskBegin" + plugin +
                "\nkUnInitBegin" + plugin + "\nkUnInitEnd" + plugin +
                " ms=0\nkFreeBegin\nkFreeEnd\nkStopCounted" + plugin +
                " number=1\nkPluginsStopEnd ms=200\n",
            AllEvents());
}

TEST_P(FrameLogNames, AreReadAsTheyAreFromAFailedStart) {
  CPluginManager manager;
  Init(manager, name);
  manager.Start(nullptr);
  manager.Uninit();
  const std::string plugin = " plugin=" + name;
  const std::string path = " path=/addon/" + name + ".dll";
  EXPECT_EQ("kPluginsStartBegin\nkLoadTaskBegin" + plugin + "\nkLoadBegin" + path +
                "\nkLoadFailed" + path + " number=126\nkFreeBegin\nkFreeEnd\nkNotLoadedCounted" +
                plugin + " number=1\nkPluginsStartEnd ms=200\nkPluginsStopBegin\nkUnloadTaskBegin" +
                plugin + "\nkNothingToStopCounted" + plugin + " number=1\nkPluginsStopEnd ms=200\n",
            AllEvents());
}

TEST_P(FrameLogNames, AreReadAsTheyAreFromAnInitThatThrowsThem) {
  seam.libraries["a"].init = [this]() -> bool { throw std::runtime_error(name); };
  CPluginManager manager;
  Init(manager, "a");
  manager.Start(nullptr);
  EXPECT_NE(std::string::npos, AllEvents().find("\nkInitThrew reason=" + name + "\nkInitFailed"));
}

INSTANTIATE_TEST_SUITE_P(WithPiecesOfTheTexts, FrameLogNames,
                         testing::Range(std::size_t{0}, std::size(kNames)));

FrameLogRow RowOfTwo(const char* between) {
  return {FrameEvent::Kind::kInitSucceeded,
          "",
          "m",
          FrameLogRow::Level::kAny,
          {"of ", between, " ms"},
          {FrameLogRow::Field::kPlugin, FrameLogRow::Field::kMilliseconds}};
}

TEST(FrameLogRow, MatchesOnlyALineThatIsWhollyItsOwn) {
  const FrameLogRow row = RowOfTwo(" takes ");
  EXPECT_TRUE(MatchFrameLog(row, 3, "m", "[f]of a takes 5 ms[s(1)]"));
  for (const char* text :
       {"[f]of a takes 5 ms!![s(1)]", "[f]so of a takes 5 ms[s(1)]", "[f]of a takes x ms[s(1)]",
        "[f]of a takes  ms[s(1)]", "[f]of a takes 5x ms[s(1)]", "[f]of a 5 ms[s(1)]",
        "[f]of a takes 99999999999999999999 ms[s(1)]", "[f]of  ms[s(1)]", "[f]of[s(1)]",
        "of a takes 5 ms", "[f]of a takes 5 ms", "[f]", "]", "[", ""}) {
    EXPECT_FALSE(MatchFrameLog(row, 3, "m", text)) << text;
  }
  EXPECT_FALSE(MatchFrameLog(row, 3, "other", "[f]of a takes 5 ms[s(1)]"));
}

TEST(FrameLogRow, OfANumberAloneMatchesNothingElse) {
  FrameLogRow row = RowOfTwo("");
  row.texts = {"cost ", " ms"};
  row.fields = {FrameLogRow::Field::kMilliseconds};
  EXPECT_TRUE(MatchFrameLog(row, 3, "m", "[f]cost 5 ms[s(1)]"));
  EXPECT_FALSE(MatchFrameLog(row, 3, "m", "[f]cost many ms[s(1)]"));
}

TEST(FrameLogRow, WithoutAFieldMatchesItsTextAlone) {
  FrameLogRow row = RowOfTwo("");
  row.texts = {"begin"};
  row.fields = {};
  EXPECT_TRUE(MatchFrameLog(row, 3, "m", "[f]begin[s(1)]"));
  EXPECT_FALSE(MatchFrameLog(row, 3, "m", "[f]begin of it[s(1)]"));
}

TEST(FrameLogRow, TextsDoNotOverlap) {
  const FrameLogRow row = {
      FrameEvent::Kind::kInitThrew, "", "m", FrameLogRow::Level::kAny, {"threw [", "]"},
      {FrameLogRow::Field::kReason}};
  FrameLogRow overlapping = row;
  overlapping.texts = {"a [x", "x]"};
  EXPECT_TRUE(MatchFrameLog(row, 3, "m", "[f]threw [][s(1)]"));
  EXPECT_FALSE(MatchFrameLog(overlapping, 3, "m", "[f]a [x][s(1)]"));
}

TEST(ParseFrameLog, DistinguishesLinesOfOneTextByTheirLevel) {
  const std::string text = "[f][Plugin Load]Plugin [a] SinglePluginLoad End. count[2].[s(1)]";
  const std::string module = "platform.PluginFrame";
  EXPECT_EQ("kStartCounted plugin=a number=2", Describe(*ParseFrameLog(4, module, text)));
  EXPECT_EQ("kStartFailedCounted plugin=a number=2", Describe(*ParseFrameLog(5, module, text)));
  const std::string refused = "[f][PluginManager Init]----no----[s(1)]";
  EXPECT_EQ("kInitRefused reason=no", Describe(*ParseFrameLog(6, module, refused)));
  EXPECT_FALSE(ParseFrameLog(5, module, refused));
}

TEST(ParseFrameLog, FindsNoEventInLinesOfOthers) {
  const std::string text = "[f][Plugin]FreeLibrary Begin[s(1)]";
  EXPECT_TRUE(ParseFrameLog(3, "platform.PluginFrame", text));
  EXPECT_FALSE(ParseFrameLog(3, "platform.LPCIntegrate", text));
  EXPECT_FALSE(ParseFrameLog(3, "a.server", text));
  EXPECT_FALSE(ParseFrameLog(3, "platform.PluginFrame", "[Plugin]FreeLibrary Begin"));
  EXPECT_FALSE(ParseFrameLog(3, "platform.PluginFrame", ""));
}

}  // namespace
