#pragma once

#include <filesystem>
#include <string>

#include "reference/os/CrashHandler.h"
#include "workbench/record/FrameEvent.h"

// What HUB says when the process ends by a crash or by an exit that is not its own: which plugin's
// code ran on that thread, in which phase and for how long, the stack, and where the record lies.

/// Installs the crash handler. At the begin of main.
void InstallCrashReport();

/// From now on an exit is HUB's own, unless the process is crashing: then this does not return, and
/// the crash ends the process with its own status.
void AnnounceExit();

/// Where the crash's line goes to, and what the sentence calls the record; empty: nowhere.
void SetCrashRecord(const std::filesystem::path& record);

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
