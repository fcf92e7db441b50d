#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "stub/Behavior.h"
#include "workbench/timeline/Timeline.h"

// A product that does what the plugins of a recorded run did, without their code.

/// A plugin of the replayed product.
struct ReplayPlugin {
  enum class Library { kStub, kMissing, kUnusable };

  std::string recordedID;
  std::string id;  // that of its files; see ReplayNames
  std::string version;
  bool isPlatform = false;
  bool hasID = true;  // false: a sub platform without one; it has no files
  std::vector<std::size_t> dependsOn;
  Library library = Library::kStub;
  Behavior behavior;  // of a stub
};

struct ReplayOptions {
  bool anonymous = false;  // no names, versions and numbers of the recorded product
  double speed = 1;        // durations are divided by it
  bool busy = false;       // stubs use the processor while their entries last
};

struct Replay {
  std::string product;  // as in Product.xml
  std::string version;
  bool busy = false;
  std::vector<ReplayPlugin> plugins;     // in the order of Timeline::plugins
  std::vector<std::string> differences;  // from the recorded run, a sentence each

  /// The index of the plugin with this recorded ID, or with this ID in the replay; the number of
  /// plugins when there is none.
  std::size_t Find(const std::string& id) const;
};

/// The product for a run whose edges are known.
///
/// Init and UnInit take as long as recorded. The time of loading and unmapping a library, when it
/// is at least a millisecond, is added to them: the start and the stop then take as long as they
/// did. A plugin that had not returned hangs; one that crashed crashes after the same time.
Replay MakeReplay(const Timeline& timeline, const ReplayOptions& options);

/// A fault that is put into a plugin's Init.
struct Fault {
  enum class Kind { kFail, kHang, kCrash, kSlow };

  Kind kind = Kind::kFail;
  std::int64_t milliseconds = 0;  // of kSlow: how much longer it takes
};

/// Parses "fail", "hang", "crash" or "slow:500". Throws std::invalid_argument with a sentence.
Fault ParseFault(const std::string& text);

/// Puts the fault into the plugin. A plugin whose library is missing or unusable gets a stub.
void AddFault(ReplayPlugin& plugin, const Fault& fault);

/// Lets plugins that hang or crash succeed instead. Returns the sentences that say so.
std::vector<std::string> MendHangsAndCrashes(Replay& replay);
