#include "host/EarlyCheck.h"

#include <fmt/format.h>

#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <utility>

#include "host/PluginHeads.h"
#include "reference/os/LocalText.h"
#include "reference/os/Threads.h"
#include "workbench/check/Rule.h"
#include "workbench/product/XmlThreads.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostFindings = 10;
constexpr char kStartsNothing[] = "TEV218";
constexpr std::size_t kMostPlaces = 10;  // of one error
constexpr std::chrono::milliseconds kLeastLimit{20};
constexpr int kPartOfFrameInit = 50;

/// The rules on files, plugins and dependencies, areas 1 to 3, that are errors, and the warning
/// that a product starts nothing: no library has to be read for them.
std::vector<const Rule*> EarlyRules() {
  std::vector<const Rule*> rules;
  for (const Rule* rule : AllRules()) {
    const bool isEarly = rule->id[3] >= '1' && rule->id[3] <= '3';
    const bool isShown =
        rule->severity == Severity::kError || rule->id == std::string(kStartsNothing);
    if (isEarly && isShown) rules.push_back(rule);
  }
  return rules;
}

std::string PlaceText(const fs::path& folder, const Place& place) {
  const std::string file = LocalFromPath((folder / PathFromLocal(place.file)).make_preferred());
  return place.line == 0 ? file : file + ":" + std::to_string(place.line);
}

/// "PATH:LINE: MESSAGE (NOTE: PATH:LINE; ...)"
std::string Sentence(const fs::path& folder, const RuleFinding& finding) {
  std::string text = PlaceText(folder, finding.place) + ": " + finding.message;
  std::string places;
  std::size_t count = 0;
  for (const RelatedPlace& related : finding.related) {
    if (++count > kMostPlaces) break;
    places +=
        (places.empty() ? " (" : "; ") + related.message + ": " + PlaceText(folder, related.place);
  }
  return places.empty() ? text : text + places + ")";
}

std::string RestOf(std::size_t count, const std::string& bin) {
  return fmt::format("and {} more: HUB check --bin {} shows all", count - kMostFindings, bin);
}

EarlyFindings NotChecked(const std::string& why) {
  EarlyFindings none;
  none.findings.push_back({Severity::kError, "the product's files could not be checked: " + why});
  return none;
}

}  // namespace

struct EarlyCheck::Shared {
  explicit Shared(std::function<void()> whenDone) : onDone(std::move(whenDone)) {}

  const std::function<void()> onDone;

  std::mutex mutex;
  std::condition_variable changed;

  // Guarded by mutex.
  bool frameInitEnded = false;
  std::optional<HandedOver> handedOver;
  bool done = false;
  std::optional<EarlyFindings> findings;

  void WaitForFrameInit() {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [this] { return frameInitEnded; });
  }

  void Finish(EarlyFindings found) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      findings = std::move(found);
      done = true;
    }
    changed.notify_all();
    onDone();
  }

  void Check(const fs::path& bin, std::int32_t runningModule) {
    try {
      Finish(Find(bin, runningModule));
    } catch (const std::bad_alloc&) {
      Finish(NotChecked("memory ran out"));
    }
  }

  EarlyFindings Find(const fs::path& bin, std::int32_t runningModule) {
    const LocalNames names = SystemNames();
    EarlyFindings found;
    const auto place = FindProduct(bin, names);
    if (!place) {
      WaitForFrameInit();
      return found;
    }
    const auto product = ReadCheckedProduct(*place, names, runningModule);
    WaitForFrameInit();
    if (handedOver) UseModel(*product, std::move(*handedOver));
    for (const RuleFinding& finding : RunRules(EarlyRules(), *product)) {
      found.findings.push_back({finding.severity, Sentence(place->folder, finding)});
      if (finding.refused) found.refusals.push_back(found.findings.back().text);
    }
    return found;
  }
};

EarlyCheck::EarlyCheck(const fs::path& bin, std::int32_t runningModule,
                       std::function<void()> onDone)
    : m_shared(std::make_shared<Shared>(std::move(onDone))) {
  PrepareXmlForThreads();
  try {
    m_thread = std::thread([shared = m_shared, bin, runningModule] {
      NameThread("check");
      shared->Check(bin, runningModule);
    });
  } catch (const std::system_error& error) {
    m_shared->Finish(NotChecked(error.what()));
  }
}

EarlyCheck::~EarlyCheck() {
  if (!m_thread.joinable()) return;
  if (IsDone()) {
    m_thread.join();
  } else {
    m_thread.detach();
  }
}

void EarlyCheck::Continue(std::optional<HandedOver> handedOver) {
  {
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    m_shared->handedOver = std::move(handedOver);
    m_shared->frameInitEnded = true;
  }
  m_shared->changed.notify_all();
}

std::optional<EarlyFindings> EarlyCheck::WaitFor(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(m_shared->mutex);
  m_shared->changed.wait_for(lock, limit, [this] { return m_shared->done; });
  return std::exchange(m_shared->findings, std::nullopt);
}

EarlyFindings EarlyCheck::Wait() {
  std::unique_lock<std::mutex> lock(m_shared->mutex);
  m_shared->changed.wait(lock, [this] { return m_shared->done; });
  return *std::exchange(m_shared->findings, std::nullopt);
}

bool EarlyCheck::IsDone() const {
  const std::lock_guard<std::mutex> lock(m_shared->mutex);
  return m_shared->done;
}

std::chrono::milliseconds EarlyCheck::Limit(std::chrono::nanoseconds frameInit) {
  return kLeastLimit +
         std::chrono::duration_cast<std::chrono::milliseconds>(frameInit / kPartOfFrameInit);
}

std::vector<Finding> FirstFindings(std::vector<Finding> findings, const std::string& bin) {
  if (findings.size() <= kMostFindings) return findings;
  const std::string rest = RestOf(findings.size(), bin);
  findings.resize(kMostFindings);
  findings.push_back({Severity::kError, rest});
  return findings;
}

std::vector<std::string> FirstSentences(std::vector<std::string> sentences,
                                        const std::string& bin) {
  if (sentences.size() <= kMostFindings) return sentences;
  const std::string rest = RestOf(sentences.size(), bin);
  sentences.resize(kMostFindings);
  sentences.push_back(rest);
  return sentences;
}
