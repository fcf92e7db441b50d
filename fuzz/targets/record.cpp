// A flight record: what is read is written and read again, and reported.

#include <stdexcept>
#include <utility>

#include "fuzz/FuzzTarget.h"
#include "fuzz/ReportTarget.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/record/RecordedRun.h"

namespace {

std::string Lines(const FlightRecord& record) {
  std::string lines = RecordLine(record.head) + "\n";
  for (const PluginHead& plugin : record.plugins) lines += RecordLine(plugin) + "\n";
  for (const RunEvent& event : record.events) lines += RecordLine(event) + "\n";
  return lines;
}

}  // namespace

void Fuzz(const std::string& input) {
  const std::string file = FuzzFolder::Instance().Write("run.jsonl", input);
  RecordedRun run;
  try {
    run = ReadRecordedRun(file);
  } catch (const std::runtime_error&) {
    return;
  }
  const std::string lines = Lines(run.record);
  const FlightRecord again = ReadFlightRecord(FuzzFolder::Instance().Write("again.jsonl", lines));
  Check(again.unreadableLines == 0 && Lines(again) == lines,
        "a record that was read is written and read the same");
  FuzzReport(std::move(run));
}
