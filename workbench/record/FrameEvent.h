#pragma once

#include <cstdint>
#include <string>

/// The content of one line of the frame's log. The comment at each kind names the members it sets.
struct FrameEvent {
  enum class Kind {
    // Frame_Init
    kPlatformInitialised,  // milliseconds
    kPlatformInitFailed,
    kManagerInitBegin,
    kManagerInitEnd,  // milliseconds
    kManagerInitFailed,
    kFrameInitEnd,            // milliseconds
    kInitRefused,             // reason: the frame's text on why the initialisation failed
    kStepThrew,               // reason: the text of the exception that a step of an entry threw
    kStepThrewNoException,    // a step threw something that is no exception object
    kRequiredFileUnreadable,  // path: a model file without which Frame_Init fails
    kOptionalFileUnreadable,  // path: a model file without which the frame goes on
    kPluginDropped,           // plugin, path: an addon's plugin without a readable description
    kTypeUnknown,             // path: a description whose type is neither library nor executable
    kAddonDropped,            // plugin: the addon's ID. One of its plugins was dropped
    kAddonUnreadable,         // path: its description cannot be read, or has another ID
    kAddonIncompatible,      // plugin: the addon's ID. It is installed, for another product version
    kToolUnreadable,         // path: as kAddonUnreadable
    kProductVersionMissing,  // so that no addon is read

    // Frame_Start and the start callback
    kFrameStartBegin,
    kPlatformStartBegin,
    kPlatformStarted,  // milliseconds
    kFrameStartEnd,
    kPluginsStartBegin,
    kPluginsStartEnd,  // milliseconds
    kNoPoolForStart,
    kStartCallbackEnd,

    // one plugin's start, on its thread
    kLoadTaskBegin,         // plugin
    kLoadBegin,             // path
    kLoadSucceeded,         // path
    kLoadFailed,            // path; number: the system's error code; reason: not in the line, added
                            // by the host when it has a better one than the loader's message
    kInitBegin,             // plugin
    kInitSucceeded,         // plugin, milliseconds
    kInitFailed,            // plugin, milliseconds
    kInitThrew,             // reason: the exception's text
    kInitThrewNoException,  // something that is no exception object
    kInitMissing,           // reason: not in the line, added by the host: the exported mangled name
    kStartCounted,          // plugin; number: the count
    kStartFailedCounted,    // plugin; number: the count. Its Init failed
    kStartAbandoned,        // plugin, reason; number: the count. Its task threw
    kNotLoadedCounted,      // plugin; number: the count
    kLoadSkipped,           // plugin, reason; number: the count. Its task was refused or too late
    kStartCountedSomehow,   // plugin; number: the count. kStartCounted or kStartFailedCounted, of a
                            // line whose level is not known

    // Frame_Stop
    kFrameStopBegin,
    kPlatformPrepareBegin,
    kPlatformPrepareEnd,  // milliseconds
    kLpcStopFailed,
    kNoPoolForStop,
    kPluginsStopBegin,
    kPluginsStopEnd,  // milliseconds
    kPlatformStopBegin,
    kPlatformStopEnd,  // milliseconds
    kFrameStopEnd,     // milliseconds

    // one plugin's stop, on its thread
    kUnloadTaskBegin,         // plugin
    kNamelessNotCounted,      // a record without a name, which the stop never counts
    kUnInitBegin,             // plugin
    kUnInitEnd,               // plugin, milliseconds
    kUnInitThrew,             // reason: the exception's text
    kUnInitThrewNoException,  // something that is no exception object
    kUnInitMissing,
    kFreeBegin,
    kFreeEnd,
    kStopCounted,           // plugin; number: the count
    kStopRefusedCounted,    // plugin; number: the count
    kNothingToStopCounted,  // plugin; number: the count. It was not loaded
    kUnloadSkipped,         // plugin, reason; number: the count. Its task was refused
    kStopCountedSomehow,    // plugin; number: the count. kStopCounted or kStopRefusedCounted, of a
                            // line whose level is not known

    // Frame_UnInit
    kFrameUnInitBegin,
    kFrameUnInitEnd  // milliseconds
  };

  Kind kind = Kind::kFrameInitEnd;
  std::string plugin;
  std::int64_t milliseconds = -1;
  std::int64_t number = -1;
  std::string path;
  std::string reason;
};
