#include "workbench/record/RecordedRun.h"

RecordedRun ReadRecordedRun(const std::filesystem::path& file) {
  RecordedRun run;
  run.name = file.u8string();
  run.record = ReadFlightRecord(file);
  return run;
}
