#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "reference/os/CrashHandler.h"
#include "workbench/record/FrameEvent.h"
#include "workbench/record/RunEvent.h"

// What HUB says when the process ends by a crash or by an exit that is not its own: which plugin's
// code ran on that thread, in which phase and for how long, the stack, and where the record lies.
//
// The thread that crashed writes that to the record and to standard error. What belongs on standard
// output the run's thread writes, which may use the heap and waits in ReportedCrash meanwhile; the
// thread that crashed waits for it, some seconds at most, and then writes the little that it can.

/// Installs the crash handler. At the begin of main.
void InstallCrashReport();

/// From now on an exit is HUB's own, unless the process is crashing: then this does not return, and
/// the crash ends the process with its own status.
void AnnounceExit();

/// `file`: where the crash's line goes to; `record`: what the sentence calls the record. Each may
/// be empty. Called once.
void SetCrashRecord(const std::filesystem::path& file, const std::filesystem::path& record);

/// What standard output says of a crash when the run's thread cannot write it.
enum class CrashOutput { kNothing, kObject, kEvent };

/// The calling thread is the run's from now on. `output`: HUB's own standard output.
void SetCrashOutput(SystemFile output, CrashOutput kind);

/// The crash that ends the process, its number the exit status, -1 where the signal is it; none:
/// there is none. Waits until the thread that crashed has written its report. The run's thread.
std::optional<RunEvent> ReportedCrash();

/// To be called before the end of the run is written to standard output, by the run's thread; false
/// when the thread that crashed has begun to do so.
bool ClaimLastOutput();

/// The end of the run stands on standard output.
void LastOutputIsWritten();

/// Permission to write a line of the record. Once the process has crashed there is none, so that
/// the crash's line stays the last one. Any thread; held for the write alone.
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

/// Follows which plugin's code the calling thread runs, and which libraries are mapped, by what the
/// frame logs on it. Must be called on the thread that logged.
void FollowPluginCode(const FrameEvent& event);

/// The library file that the calling thread has loaded last for a plugin; empty for none.
std::string LoadedLibrary();
