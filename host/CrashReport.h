#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "reference/os/CrashHandler.h"
#include "workbench/record/FrameEvent.h"
#include "workbench/record/RunEvent.h"

// What HUB reports when the process crashes, or when something other than HUB calls exit: which
// plugin's code ran on that thread, in which phase and for how long, the stack, the record's path.
//
// The crashed thread writes this to the record and to standard error. Standard output is written by
// the run's thread, which waits in ReportedCrash until then and may use the heap. The crashed
// thread waits for it, three seconds at most, and then writes what is possible without the heap.

/// Installs the crash handler. Call it at the start of main.
void InstallCrashReport();

/// Call it before HUB ends the process itself: the exit is then not reported as a crash. Does not
/// return when the process is crashing: the crash then ends the process with its own status.
void AnnounceExit();

/// `file`: the file to which the crash's line is appended; `record`: the record's path to show to
/// the user. Each may be empty. Called once.
void SetCrashRecord(const std::filesystem::path& file, const std::filesystem::path& record);

/// What the crashed thread writes to standard output when the run's thread cannot write there.
enum class CrashOutput { kNothing, kObject, kEvent };

/// Registers the calling thread as the run's thread. `output`: HUB's standard output.
void SetCrashOutput(SystemFile output, CrashOutput kind);

/// The crash that ends the process; none when there is no crash. `number` is the exit status, or -1
/// when a signal ends the process. Waits for the crashed thread's report. For the run's thread.
std::optional<RunEvent> ReportedCrash();

/// Called by the run's thread before it writes the end of the run to standard output. Returns false
/// when the crashed thread has already begun to write it.
bool ClaimLastOutput();

/// Called when the end of the run has been written to standard output.
void LastOutputIsWritten();

/// Permission to write a line of the record. It is refused once the process has crashed, so that
/// the crash's line stays the last one. Thread-safe; hold it only during the write.
class RecordPermit {
 public:
  RecordPermit();
  ~RecordPermit();
  RecordPermit(const RecordPermit&) = delete;
  RecordPermit& operator=(const RecordPermit&) = delete;

  explicit operator bool() const { return m_granted; }

 private:
  bool m_granted;
};

/// Keeps track of which plugin's code the calling thread runs and which libraries are mapped, from
/// the frame's log lines. Must be called on the thread that logged the line.
void TrackPluginCode(const FrameEvent& event);

/// The last library file that the calling thread loaded for a plugin; empty when it loaded none.
std::string LoadedLibrary();
