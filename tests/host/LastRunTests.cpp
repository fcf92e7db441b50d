#include "host/LastRun.h"

#include <gtest/gtest.h>

#include <vector>

#include "reference/os/LocalText.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

RunHead Head() {
  RunHead head;
  head.time = "2026-11-21T18:46:59.123Z";
  return head;
}

RunEvent Event(RunEvent::Kind kind, const std::string& text = {}) {
  RunEvent event;
  event.kind = kind;
  event.text = text;
  return event;
}

void WriteRecord(const fs::path& file, const std::vector<RunEvent>& events) {
  RecordWriter record(file);
  record.Write(Head());
  for (const RunEvent& event : events) record.Write(event);
}

/// What LastRun::Recall returns after a run whose record has these events.
std::optional<std::string> Recalled(const std::vector<RunEvent>& events) {
  const TemporaryFolder folder;
  const LastRun run(folder.Path());
  const fs::path record = folder.Path() / "run.jsonl";
  WriteRecord(record, events);
  run.Begin(record);
  auto sentence = run.Recall({});
  const std::string place = " (its record: " + LocalFromPath(record) + ")";
  if (sentence) sentence->erase(sentence->find(place), place.size());
  return sentence;
}

TEST(LastRun, OfAProductThatNeverRanIsNone) {
  const TemporaryFolder folder;
  EXPECT_EQ(std::nullopt, LastRun(folder.Path()).Recall({}));
}

TEST(LastRun, ThatCrashedIsRecalledByItsSentence) {
  EXPECT_EQ("the last run of this product, begun 2026-11-21T18:46:59.123Z, ended so: SIGSEGV in a",
            Recalled({Event(RunEvent::Kind::kUp), Event(RunEvent::Kind::kCrash, "SIGSEGV in a")}));
}

TEST(LastRun, ThatCrashedAfterItsEndIsRecalledToo) {
  EXPECT_EQ("the last run of this product, begun 2026-11-21T18:46:59.123Z, ended so: SIGSEGV in a",
            Recalled({Event(RunEvent::Kind::kEnd), Event(RunEvent::Kind::kCrash, "SIGSEGV in a")}));
}

TEST(LastRun, WithoutAnEndWasKilled) {
  EXPECT_EQ(
      "the last run of this product, begun 2026-11-21T18:46:59.123Z, ended before its end: it was "
      "killed, or the machine went down",
      Recalled({Event(RunEvent::Kind::kUp)}));
}

TEST(LastRun, WhoseRecordHasAnEndIsNone) {
  EXPECT_EQ(std::nullopt, Recalled({Event(RunEvent::Kind::kUp), Event(RunEvent::Kind::kEnd)}));
}

TEST(LastRun, ThatEndedIsForgotten) {
  const TemporaryFolder folder;
  const LastRun run(folder.Path());
  WriteRecord(folder.Path() / "run.jsonl", {});
  run.Begin(folder.Path() / "run.jsonl");
  run.End();
  EXPECT_EQ(std::nullopt, run.Recall({}));
}

TEST(LastRun, IsMarkedByTheFilesThatTheHandbookNames) {
  const TemporaryFolder folder;
  const LastRun run(folder.Path());
  run.Begin(folder.Path() / "run.jsonl");
  EXPECT_EQ(LocalFromPath(folder.Path() / "run.jsonl") + "\n", folder.Read("last"));
  EXPECT_EQ(folder.Path() / "run.jsonl", run.Record());
  EXPECT_EQ(folder.Path() / "last-unrecorded", run.Unrecorded());
  run.End();
  EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST(LastRun, WithoutARecordIsRecalledByItsHead) {
  const TemporaryFolder folder;
  const LastRun run(folder.Path());
  WriteRecord(run.Unrecorded(), {Event(RunEvent::Kind::kCrash, "SIGSEGV in a")});
  run.Begin({});
  EXPECT_EQ(
      "the last run of this product, begun 2026-11-21T18:46:59.123Z, ended so: SIGSEGV in a (it "
      "kept no record)",
      run.Recall({}));
  run.End();
  EXPECT_FALSE(fs::exists(run.Unrecorded()));
}

TEST(LastRun, WhoseRecordIsReplacedIsRecalledWithoutItsPlace) {
  const TemporaryFolder folder;
  const LastRun run(folder.Path());
  const fs::path record = folder.Path() / "run.jsonl";
  WriteRecord(record, {Event(RunEvent::Kind::kCrash, "SIGSEGV in a")});
  run.Begin(record);
  EXPECT_EQ(
      "the last run of this product, begun 2026-11-21T18:46:59.123Z, ended so: SIGSEGV in a (this "
      "run replaces its record)",
      run.Recall(record));
}

TEST(LastRun, WhoseRecordIsGoneWasKilled) {
  const TemporaryFolder folder;
  const LastRun run(folder.Path());
  const fs::path record = folder.Path() / "gone.jsonl";
  run.Begin(record);
  EXPECT_EQ(
      "the last run of this product ended before its end: it was killed, or the machine went down "
      "(its record: " +
          LocalFromPath(record) + ")",
      run.Recall({}));
}

}  // namespace
