// Runs that can only be tested on POSIX systems: outputs that cannot be written, signals of
// children, a stop request while reading a file blocks, crashes in static objects.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/posix/FileSizeLimit.h"
#include "tests/system/HowItEnds.h"
#include "tests/system/MadeProduct.h"
#include "tests/system/RunToTheCrash.h"
#include "tests/system/posix/UnreadPipe.h"

using nlohmann::json;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

namespace {

/// Writes a program to `folder` that runs HUB with standard streams that a shell has redirected.
std::string RedirectedHub(const TemporaryFolder& folder, const std::string& redirections) {
  const std::string program =
      folder.Write("hub", "#!/bin/sh\nexec \"" TEV_HUB "\" \"$@\" " + redirections + "\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  return program;
}

/// The signals of a thread from /proc, as bits.
struct Signals {
  std::uint64_t blocked = 0;
  std::uint64_t ignored = 0;
};

/// The other bits are real-time signals, some of which the C library ignores in processes it
/// spawns.
constexpr std::uint64_t kStandardSignals = 0x7FFFFFFF;

/// Reads what the fixture starts_a_child has written: for the child and for the plugin's thread.
std::vector<Signals> ReadSignals(const std::string& text) {
  std::vector<Signals> all(2);
  std::istringstream lines(text);
  for (Signals& signals : all) {
    std::string name;
    lines >> name >> std::hex >> signals.blocked >> name >> signals.ignored;
  }
  EXPECT_FALSE(lines.fail()) << text;
  return all;
}

/// Runs the product, whose output cannot be written, until it is up. Expects that this is reported
/// once on standard error, and in the record.
void ExpectReportedOnce(MadeProduct& product, const HubSettings& settings) {
  const HubResult result = product.RunUntilUp("", settings);
  EXPECT_EQ(3, result.status);
  const std::size_t reported = result.errors.find("HUB: standard output (");
  EXPECT_NE(std::string::npos, reported) << result.errors;
  EXPECT_EQ(std::string::npos, result.errors.find("standard output", reported + 10));
  EXPECT_THAT(product.Site().Read("run.jsonl"),
              AllOf(HasSubstr("cannot be written"), HasSubstr("\"status\":\"degraded\"")));
}

TEST(OutputThatCannotBeWritten, IsReportedOnceAndDegradesTheRun) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Plugin("a.server").Site().Path("run.jsonl");
  settings.output = "/dev/full";
  ExpectReportedOnce(product, settings);
}

TEST(OutputThatCannotBeWritten, BecauseItIsClosedDegradesTheRunToo) {
  MadeProduct product;
  const TemporaryFolder folder;
  HubSettings settings;
  settings.record = product.Plugin("a.server").Site().Path("run.jsonl");
  settings.program = RedirectedHub(folder, ">&-");
  ExpectReportedOnce(product, settings);
}

TEST(OutputThatCannotBeWritten, IsFoundWhenItsOnlyTextIsTheObject) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Plugin("a.server").Site().Path("run.jsonl");
  settings.output = "/dev/full";
  const HubResult result = product.RunUntilUp("--json", settings);
  EXPECT_EQ(3, result.status);
  const std::string sentence =
      "standard output (No space left on device) cannot be written: a part of it is lost";
  EXPECT_EQ("HUB: " + sentence + "\n", result.errors);
  const std::string lines = product.Site().Read("run.jsonl");
  const json end = json::parse(lines.substr(lines.rfind('\n', lines.size() - 2)));
  EXPECT_EQ("degraded: the one plugin started; " + sentence, end["text"]);
  EXPECT_EQ("degraded", end["status"]);
  EXPECT_EQ(3, end["exitStatus"]);
}

TEST(OutputThatCannotBeWritten, IsFoundWhenItsLastLineAloneIsLost) {
  MadeProduct product;
  product.Plugin("a.server");
  const std::string whole = product.RunUntilUp("--events --no-record").output;
  // The events of two runs differ only in the digits of numbers: less than half of the last event.
  const std::size_t size = (whole.rfind('\n', whole.size() - 2) + whole.size()) / 2;
  HubResult result;
  {
    const FileSizeLimit limit(size);
    result = product.RunUntilUp("--events --no-record");
  }
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("HUB: standard output (File too large) cannot be written: a part of it is lost\n",
            result.errors);
  EXPECT_EQ(size, result.output.size());
  EXPECT_THAT(result.output, HasSubstr("\n{\"record\":\"event\",\"event\":\"end\","));
}

TEST(OutputThatCannotBeWritten, ByAReaderThatHasGoneEndsNothing) {
  MadeProduct product;
  UnreadPipe pipe;
  HubSettings settings;
  settings.output = pipe.Name();
  HubProcess hub(product.Plugin("a.server").Arguments("--events"), settings);
  pipe.Close();
  EXPECT_TRUE(hub.AwaitUp());
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(3, result.status);
  EXPECT_THAT(result.errors, HasSubstr("standard output ("));
}

TEST(OutputThatCannotBeWritten, BecauseNobodyReadsItHoldsNothingUp) {
  MadeProduct product;
  for (int i = 0; i < 60; ++i) product.Plugin("plugin" + std::to_string(i) + ".server");
  const UnreadPipe pipe;  // takes fewer events than there are
  HubSettings settings;
  settings.output = pipe.Name();
  const HubResult result = product.RunUntilUp("--events", settings);
  EXPECT_EQ(3, result.status);
  EXPECT_THAT(result.errors, HasSubstr("nobody reads it"));
}

TEST(OutputThatCannotBeWritten, OfAReportFails) {
  MadeProduct product;
  HubSettings settings;
  settings.record = product.Plugin("a.server").Site().Path("run.jsonl");
  product.RunUntilUp("", settings);
  HubSettings full;
  full.output = "/dev/full";
  const std::string record = "\"" + settings.record.string() + "\"";
  for (const std::string& command : {"report " + record, "why a.server --record " + record}) {
    const HubResult result = RunHub(command, full);
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("HUB: standard output cannot be written: No space left on device\n", result.errors);
  }
}

TEST(OutputThatCannotBeWritten, IsTheLogOrTheRecordOnAFullDisk) {
  MadeProduct product;
  product.Plugin("a.server");
  // Through a link, so that a wrong rotation would rename the link and not the device.
  const std::string full = product.Site().Path("full").string();
  std::filesystem::create_symlink("/dev/full", full);
  const HubResult log = product.RunUntilUp("--json --log \"" + full + "\"");
  EXPECT_EQ(3, log.status);
  const std::string lost = full + " cannot be written: a part of it is lost\n";
  EXPECT_EQ("HUB: the log " + lost, log.errors);
  EXPECT_EQ("degraded", log.Json()["status"]);
  const HubResult record = product.RunUntilUp("--events --record \"" + full + "\"");
  EXPECT_EQ(3, record.status);
  EXPECT_EQ("HUB: the flight record " + lost, record.errors);
}

TEST(ClosedStandardStreams, NeverLetAPluginPrintIntoTheRecord) {
  MadeProduct product;
  const TemporaryFolder folder;
  HubSettings settings;
  settings.record = product.Plugin("prints.server", "init_prints").Site().Path("run.jsonl");
  settings.program = RedirectedHub(folder, "<&- >&- 2>&-");
  product.RunUntilUp("", settings);
  EXPECT_THAT(product.Site().Read("run.jsonl"),
              AllOf(HasSubstr("\"event\":\"end\""), Not(HasSubstr("printed by"))));
}

TEST(OutputThatCannotBeWritten, OfTheHelpIsReportedAndFails) {
  HubSettings settings;
  settings.output = "/dev/full";
  const HubResult result = RunHub("--help", settings);
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("HUB: standard output cannot be written: No space left on device\n", result.errors);
}

TEST(OutputThatCannotBeWritten, IsALogThatIsAPipe) {
  SiteCopy site;
  ASSERT_EQ(0, mkfifo(site.Path("pipe").c_str(), 0600));
  const std::string pipe = site.Path("pipe").string();
  for (const char* command : {"run", "model"}) {
    const HubResult result =
        RunHub(std::string(command) + " --bin " + site.Bin() + " --log \"" + pipe + "\"");
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("HUB: --log: " + pipe + " is a pipe\n", result.errors);
  }
}

TEST(OutputThatCannotBeWritten, OfTheModelIsReportedAndFails) {
  MadeProduct product;
  const std::string model = "model --bin " + product.Plugin("a.server").Site().Bin();
  HubSettings full;
  full.output = "/dev/full";
  const HubResult noSpace = RunHub(model, full);
  EXPECT_EQ(1, noSpace.status);
  EXPECT_EQ("HUB: standard output cannot be written: No space left on device\n", noSpace.errors);
  const TemporaryFolder folder;
  HubSettings closed;
  closed.program = RedirectedHub(folder, ">&-");
  const HubResult badFile = RunHub(model, closed);
  EXPECT_EQ(1, badFile.status);
  EXPECT_EQ("HUB: standard output cannot be written: Bad file descriptor\n", badFile.errors);
}

/// A pseudo terminal with 60 columns, and the text written to it.
class Terminal {
 public:
  Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY)) {
    winsize size = {};
    size.ws_col = kColumns;
    size.ws_row = 24;
    EXPECT_EQ(0, grantpt(m_master));
    EXPECT_EQ(0, unlockpt(m_master));
    EXPECT_EQ(0, ioctl(m_master, TIOCSWINSZ, &size));
    m_open = open(Name().c_str(), O_RDWR | O_NOCTTY);  // keeps the text when HUB has ended
  }
  ~Terminal() {
    close(m_open);
    close(m_master);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  static constexpr unsigned short kColumns = 60;

  std::string Name() const { return ptsname(m_master); }

  /// The text written since the last call.
  std::string Shown() {
    // The system may hand the text over later and in parts: a null character marks its end.
    EXPECT_EQ(1, write(m_open, "", 1));
    std::string shown;
    for (char next = 0; read(m_master, &next, 1) == 1 && next != '\0';) shown += next;
    return shown;
  }

 private:
  int m_master;
  int m_open;
};

TEST(Screen, KeepsEachLineWithinTheTerminalAndColorsTheTable) {
  Terminal terminal;
  MadeProduct product;
  product.Plugin("a.plugin.with.a.long.name.server", "init_takes_two_seconds");
  product.Plugin("b.plugin.with.a.long.name.server", "init_fails");
  HubSettings settings;
  settings.output = terminal.Name();
  settings.environment = {{"NO_COLOR", ""}};
  HubProcess hub(product.Arguments(""), settings);
  ASSERT_TRUE(hub.AwaitUp());
  hub.RequestStop(StopKind::kInterrupt);
  EXPECT_EQ(3, hub.Wait().status);
  const std::string shown = terminal.Shown();
  std::size_t redrawn = 0;
  for (std::size_t at = 0; (at = shown.find("\r\x1b[K", at)) != std::string::npos; ++redrawn) {
    at += 4;
    const std::size_t end = shown.find_first_of("\r\n", at);
    EXPECT_LT(end - at, Terminal::kColumns) << shown.substr(at, end - at);
  }
  EXPECT_GT(redrawn, 10U);
  EXPECT_THAT(shown, HasSubstr("waiting for a.plugin.with.a.lo...\r\x1b[K"));
  EXPECT_THAT(shown,
              ContainsRegex("b\\.plugin\\.with\\.a\\.long\\.\\.\\.\\. INIT FAILED after [0-9]+ ms: "
                            "its Init\r\n {25}returned false\r\n"));
  EXPECT_THAT(shown, HasSubstr("\x1b[31mb.plugin.wi... INIT FAILED "));
  const std::regex sequences("\x1b\\[[0-9]*[mK]");
  std::istringstream lines(std::regex_replace(shown, sequences, ""));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream drawn(line);  // parts that overwrite each other
    while (std::getline(drawn, line, '\r')) EXPECT_LE(line.size(), Terminal::kColumns) << line;
  }
  settings.environment = {{"NO_COLOR", "1"}};
  product.RunUntilUp("--stop-timeout 0", settings);
  EXPECT_THAT(terminal.Shown(), Not(HasSubstr("\x1b[3")));
}

/// The text on the terminal above the table, without overwritten parts, and with milliseconds as
/// "N ms".
std::string AboveTheTable(const std::string& shown) {
  const std::string lines = shown.substr(0, shown.find("\r\nPlugin "));
  const std::regex drawnOver("[^\n]*\r\x1b\\[K");
  const std::regex milliseconds("[0-9]+ ms");
  return std::regex_replace(std::regex_replace(lines, drawnOver, ""), milliseconds, "N ms");
}

TEST(Screen, HasErrorsOnTheSameTerminalInTheirOrderAndWithinItsWidth) {
  Terminal terminal;
  MadeProduct product;
  product.Plugin("hangs.server", "uninit_hangs");
  HubSettings settings;
  settings.output = terminal.Name();
  settings.errors = terminal.Name();
  EXPECT_EQ(4, product.RunUntilUp("--stop-timeout 1 --color never", settings).status);
  EXPECT_EQ(
      "hangs.server             started in N ms\r\n"
      "Up after N ms. Ctrl-C stops it.\r\n"
      "Stopping (SIGINT).\r\n"
      "HUB: no plugin has ended for 1 s: left behind: hangs.server\r\n"
      "    has not returned from its UnInit (stopped by SIGINT)\r\n",
      AboveTheTable(terminal.Shown()));
}

TEST(SecondHub, OnTheSameProductUnderAnotherNameSaysSo) {
  RunningProduct first;
  const TemporaryFolder links;
  std::filesystem::create_directory_symlink(first.Site().Path(""), links.Path() / "link");
  const HubResult second = first.RunAgain("\"" + links / "link/bin" + "\"");
  EXPECT_EQ(0, second.status) << second.errors;
  EXPECT_THAT(second.output, HasSubstr("warning: another HUB runs this product"));
  EXPECT_EQ(0, first.Stop().status);
}

TEST(Crash, ByAStackOverflowIsReportedToo) {
  MadeProduct product;
  const HubResult result =
      product.Plugin("deep.server", "init_overflows_the_stack").Run("--no-record");
  EXPECT_EQ(SIGSEGV, result.signal);
  EXPECT_THAT(result.errors, HasSubstr(": the stack overflowed in deep.server, in Init for "));
}

void ExpectNamedStaticCrash(const std::string& fixture, const std::string& phase) {
  const HubResult result = RunToTheCrash(fixture, NullPointerSentence(phase));
  EXPECT_THAT(result.errors, HasSubstr(StackBegin("WriteNowhere")));
  ExpectEndedByMemoryFault(result);
}

TEST(Crash, OfAStaticConstructorIsOneWhileLoading) {
  ExpectNamedStaticCrash("constructor_crashes", "loading");
}

TEST(Crash, WhileLoadingIsOneOfTheStart) {
  MadeProduct product;
  product.Plugin("bad.server", "constructor_crashes");
  const std::vector<json> events = product.Run("--no-record --events").Events();
  ASSERT_FALSE(events.empty());
  EXPECT_EQ("crash", events.back()["event"]);
  EXPECT_EQ("start", events.back()["phase"]);
}

TEST(Crash, OfAStaticDestructorIsOneWhileBeingUnmapped) {
  ExpectNamedStaticCrash("destructor_crashes", "being unmapped");
}

TEST(Crash, ByAnyFatalSignalNamesThePlugin) {
  MadeProduct product;
  const HubResult result = product.Plugin("bad.server", "init_raises_sigusr1").Run("--no-record");
  EXPECT_EQ(SIGUSR1, result.signal);
  EXPECT_THAT(result.errors, HasSubstr("SIGUSR1 in bad.server, in Init for 0."));
}

TEST(ChildOfAPlugin, HasTheSignalsOfAFreshProcess) {
  // The tests may have been started with ignored signals, which HUB would inherit.
  for (int signal = 1; signal < SIGSYS + 1; ++signal) std::signal(signal, SIG_DFL);
  MadeProduct product;
  product.Plugin("a.server", "starts_a_child");
  HubSettings settings;
  settings.environment = {{"TEV_CHILD_STATUS", product.Site().Path("child").string()}};
  const HubResult result = product.RunUntilUp("", settings);
  EXPECT_EQ(0, result.status) << result.output;
  for (const Signals& signals : ReadSignals(product.Site().Read("child"))) {
    EXPECT_EQ(0U, signals.blocked);
    EXPECT_EQ(0U, signals.ignored & kStandardSignals);
  }
}

TEST(ChildOfAPlugin, HasNoSignalBlockedIfHubStartedWithAllBlocked) {
  MadeProduct product;
  product.Plugin("a.server", "starts_a_child");
  HubSettings settings;
  settings.environment = {{"TEV_CHILD_STATUS", product.Site().Path("child").string()}};
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  ASSERT_EQ(0, pthread_sigmask(SIG_SETMASK, &all, &before));
  HubProcess hub(product.Arguments(""), settings);
  ASSERT_EQ(0, pthread_sigmask(SIG_SETMASK, &before, nullptr));
  ASSERT_TRUE(hub.AwaitOutput("Up after"));
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(0, result.status) << result.output;
  for (const Signals& signals : ReadSignals(product.Site().Read("child"))) {
    EXPECT_EQ(0U, signals.blocked);
  }
}

TEST(StopRequest, ByAHangUpThatIsIgnoredFromTheStartIsNone) {
  MadeProduct product;
  const auto before = std::signal(SIGHUP, SIG_IGN);  // as nohup does
  HubProcess hub(product.Plugin("a.server").Arguments(""));
  std::signal(SIGHUP, before);
  ASSERT_TRUE(hub.AwaitOutput("Up after"));
  hub.RequestStop(StopKind::kHangUp);
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("\nStopping (SIGTERM).\n"));
}

TEST(StopRequest, ThatComesTwiceAtOnceLeaves) {
  MadeProduct product;
  HubProcess hub(product.Plugin("hangs.server", "uninit_hangs").Arguments("--json"));
  ASSERT_TRUE(hub.AwaitUp());
  hub.RequestStop(StopKind::kTerminate);
  hub.RequestStop(StopKind::kInterrupt);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status);
  EXPECT_EQ("left-behind", result.Json()["status"]);
}

TEST(StopRequest, WhileAFileIsReadForEverIsKeptAndASecondOneLeaves) {
  SiteCopy site;
  site.Remove("Product.xml");
  ASSERT_EQ(0, mkfifo(site.Path("Product.xml").c_str(), 0600));
  HubProcess run("run --json --bin " + site.Bin());
  ASSERT_TRUE(run.AwaitRecord("phase-begin"));
  run.RequestStop(StopKind::kTerminate);
  ASSERT_TRUE(run.AwaitRecord("stop-request"));
  run.RequestStop(StopKind::kTerminate);
  const HubResult result = run.Wait();
  EXPECT_EQ(4, result.status);
  EXPECT_EQ("left-behind", result.Json()["status"]);
}

TEST(StopRequest, ThatAPluginHandlesOrIgnoresIsReported) {
  std::signal(SIGHUP, SIG_DFL);  // the tests may have been started with it ignored
  MadeProduct product;
  HubProcess hub(product.Plugin("a.server", "init_takes_stop_signals").Arguments(""));
  const std::string warning = "warning: code of a plugin handles or ignores ";
  const std::string rest = ": it does not stop HUB\n";
  EXPECT_TRUE(hub.AwaitOutput(warning + "SIGTERM" + rest));
  EXPECT_TRUE(hub.AwaitOutput(warning + "SIGHUP" + rest));
  hub.RequestStop(StopKind::kInterrupt);
  const HubResult result = hub.Wait();
  EXPECT_EQ(0, result.status);
  for (const std::string signal : {"SIGTERM", "SIGHUP"}) {
    const std::size_t first = result.output.find(warning + signal);
    EXPECT_EQ(std::string::npos, result.output.find(warning + signal, first + 1)) << signal;
  }
}

TEST(StopRequest, EndsTheModelThatIsReadForEver) {
  SiteCopy site;
  site.Remove("Product.xml");
  ASSERT_EQ(0, mkfifo(site.Path("Product.xml").c_str(), 0600));
  const std::string log = site.Path("hub.log").string();
  HubProcess model("model --bin " + site.Bin() + " --log \"" + log + "\"");
  ASSERT_TRUE(model.AwaitFile(log, "Begin Read Product.xml"));
  model.RequestStop(StopKind::kTerminate);
  const HubResult result = model.Wait();
  EXPECT_EQ(4, result.status);
  EXPECT_EQ("HUB: stopped by SIGTERM before the product was read\n", result.errors);
}

TEST(PipeInPlaceOfAFile, DoesNotHoldUpTheCheck) {
  SiteCopy site;
  site.Remove("bin/META_INFO/Portal.xml");
  ASSERT_EQ(0, mkfifo(site.Path("bin/META_INFO/Portal.xml").c_str(), 0600));
  const HubResult result = RunHub("check --select TEV102 --bin " + site.Bin());
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output,
              HasSubstr("Portal.xml: error: is a pipe: the frame waits until somebody writes into "
                        "it, perhaps for ever [TEV102]\n"));
}

}  // namespace
