// A plugin that does what a recorded one did, without its code: takes as long, ends in the same
// way. HUB replay copies this library to the name of each plugin and writes the file that it reads.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>

#include "sdk/plugin/TevPlugin.h"
#include "stub/Behavior.h"
#include "stub/OwnLibrary.h"

namespace {

using Ending = EntryBehavior::Ending;
using Clock = std::chrono::steady_clock;

constexpr char kFile[] = "TevStubPlugin.txt";

Behavior OwnBehavior() {
  const std::string name = OwnName();
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(OpenBesideLibrary(kFile),
                                                             &std::fclose);
  if (!file) throw std::runtime_error(std::string("the stub cannot read ") + kFile);
  const std::optional<Behavior> behavior = ReadBehavior(*file, name);
  if (!behavior) throw std::runtime_error(std::string(kFile) + " has no good line for " + name);
  return *behavior;
}

[[noreturn]] void Hang() {
  while (true) std::this_thread::sleep_for(std::chrono::hours(1));
}

[[noreturn]] void Segfault() {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
  std::abort();
}

bool End(Ending ending) {
  switch (ending) {
    case Ending::kFails:
      return false;
    case Ending::kThrows:
      throw std::runtime_error("a stub throws in place of the plugin");
    case Ending::kHangs:
      Hang();
    case Ending::kAborts:
      std::abort();
    case Ending::kSegfaults:
      Segfault();
    case Ending::kExits:
      // With the exit handlers that ran when the plugin called it, and with other threads running.
      // NOLINTNEXTLINE(concurrency-mt-unsafe): as the recorded plugin did
      std::exit(0);
    default:
      return true;
  }
}

bool Perform(EntryBehavior Behavior::*entry) {
  const Clock::time_point begin = Clock::now();
  const Behavior behavior = OwnBehavior();
  const Clock::time_point end = begin + (behavior.*entry).duration;
  if (!behavior.busy) std::this_thread::sleep_until(end);
  while (Clock::now() < end) {
  }
  return End((behavior.*entry).ending);
}

}  // namespace

bool Init() {
  return Perform(&Behavior::init);
}

bool UnInit() {
  return Perform(&Behavior::uninit);
}
