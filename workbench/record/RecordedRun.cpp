#include "workbench/record/RecordedRun.h"

#include <algorithm>

std::vector<std::string> NotesOn(const RunHead& head) {
  std::vector<std::string> notes;
  const std::vector<std::string>& words = head.commandLine;
  const bool isDelayed = std::any_of(words.begin(), words.end(), [](const std::string& word) {
    return word.rfind("--delay", 0) == 0 || word.rfind("--shuffle", 0) == 0;
  });
  if (isDelayed) {
    notes.emplace_back("starts were delayed on purpose (--delay, --shuffle), which counts as work");
  }
  const bool isFull = std::find(words.begin(), words.end(), "--full-sleep") != words.end();
  if (isFull) notes.emplace_back("the frame slept its whole time between two looks (--full-sleep)");
  return notes;
}

RecordedRun ReadRecordedRun(const std::filesystem::path& file) {
  RecordedRun run;
  run.name = file.u8string();
  run.record = ReadFlightRecord(file);
  return run;
}
