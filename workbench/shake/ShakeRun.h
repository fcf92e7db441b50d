#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "workbench/record/FlightRecord.h"

/// What became of one plugin's start in one run. Times are nanoseconds of the steady clock.
struct StartOutcome {
  enum class Kind {
    kUnknown,  // it did not begin, or the run ended by something else before it had ended
    kOk,
    kFailed,  // its Init
    kNotLoaded,
    kCrashed,  // its code ended the process
    kHung      // its Init had not returned when the run's time was up
  };

  Kind kind = Kind::kUnknown;
  std::string reason;      // one line; may be empty
  std::int64_t begin = 0;  // of Init, or of loading the library when Init was not called
  std::int64_t end = 0;    // the same for a start that never returned

  bool IsUp() const { return kind == Kind::kOk; }
};

/// Which of two starts came first: whether the second plugin was up when the first one began.
enum class StartOrder {
  kBefore,  // it was not, and did not come up before the first one's start had ended
  kDuring,  // it came up while the first one started
  kAfter    // it was up
};

/// One run of the product in some order.
struct ShakeRun {
  std::string options;  // of HUB run, that delay the starts in the same way; empty: none
  std::string alone;    // the only plugin that was delayed; empty when it was not just one
  std::map<std::string, StartOutcome> plugins;  // of the plugins that the frame starts
  std::int64_t startNs = 0;                     // how long the start took, as far as it got

  const StartOutcome& Of(const std::string& plugin) const;

  /// The order of a plugin whose outcome is known and another one.
  StartOrder Order(const std::string& plugin, const std::string& other) const;
};

/// The run that a record tells of. `options` and `alone` are left empty.
ShakeRun MakeShakeRun(const FlightRecord& record);

/// The reason without what differs from run to run: each number becomes "#".
std::string ReasonClass(const std::string& reason);
