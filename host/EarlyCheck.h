#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "host/Finding.h"
#include "workbench/check/ProductReader.h"

/// What the rules of `HUB check` on files, plugins and dependencies find as errors of a product,
/// and that it starts nothing.
struct EarlyFindings {
  std::vector<Finding> findings;      // in the order of the files
  std::vector<std::string> refusals;  // those of them for which the frame refuses the product
};

/// Runs these rules on a thread of its own while Frame_Init reads the same files, so that a start
/// waits for them only for a moment.
///
/// Used by one thread. The destructor waits only for a thread that IsDone: another one ends by
/// itself, and nothing that it uses is destroyed before. A process that returns from main must have
/// waited for it.
class EarlyCheck {
 public:
  /// Begins to read the product whose executables are in `bin`. `onDone`: called on the check's
  /// thread when IsDone has become true.
  EarlyCheck(
      const std::filesystem::path& bin, std::int32_t runningModule,
      std::function<void()> onDone = [] {});
  EarlyCheck(const EarlyCheck&) = delete;
  EarlyCheck& operator=(const EarlyCheck&) = delete;
  ~EarlyCheck();

  /// Says how Frame_Init ended, which the rules wait for: with what it handed over, or, none, that
  /// it refused the product. Once.
  void Continue(std::optional<HandedOver> handedOver);

  /// The findings, when they are known within `limit`. Nothing after they were returned once.
  std::optional<EarlyFindings> WaitFor(std::chrono::milliseconds limit);

  /// Waits for the findings, however long that takes. Not after they were returned.
  EarlyFindings Wait();

  /// Whether the thread has ended, or nearly so: waiting for it takes no time.
  bool IsDone() const;

  /// How long a start waits for the findings: 20 ms and 2 % of Frame_Init's time.
  static std::chrono::milliseconds Limit(std::chrono::nanoseconds frameInit);

 private:
  struct Shared;

  const std::shared_ptr<Shared> m_shared;
  std::thread m_thread;  // none if it could not be started
};

/// The first ten findings and, when there are more, a last one that says how many and which command
/// shows them. `bin`: for that command.
std::vector<Finding> FirstFindings(std::vector<Finding> findings, const std::string& bin);

/// The same of sentences.
std::vector<std::string> FirstSentences(std::vector<std::string> sentences, const std::string& bin);
