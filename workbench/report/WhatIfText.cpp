#include "workbench/report/WhatIfText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

#include "workbench/output/Text.h"
#include "workbench/report/Times.h"

namespace {

constexpr std::size_t kMostMoved = 10;
constexpr std::size_t kMostOfPath = 20;
constexpr std::size_t kNumberColumns = 11;
constexpr std::int64_t kLeastShown = 100'000;
constexpr std::int64_t kLargeShare = 8;  // an eighth is more than 5 % less and more make alone
constexpr char kBold[] = "\x1b[1m";
constexpr char kPlain[] = "\x1b[0m";

class Writer {
 public:
  Writer(const Timeline& timeline, const ReportStyle& style)
      : m_timeline(timeline), m_style(style) {}

  std::string Take() { return std::move(m_text); }

  void Changes(const std::vector<WhatIfChange>& changes) {
    std::string title = "What if";
    for (const WhatIfChange& change : changes) {
      title += (&change == &changes.front() ? " " : ", ") + Escaped(change.text);
    }
    Title(title);
  }

  void Prediction(const std::string& name, const PhasePrediction& prediction) {
    if (!prediction.unknown.empty()) {
      return Sentence("  the " + name + ": nothing can be predicted: " + prediction.unknown);
    }
    Sentence(fmt::format(
        "  the {}: {} ms recorded, {} ms scheduled anew (resolution {} ms), {} ms "
        "predicted: {}",
        name, Ms(prediction.recorded), Ms(prediction.reproduced), Resolution(prediction.resolution),
        Ms(prediction.predicted), Difference(prediction)));
    if (prediction.longest - prediction.shortest > prediction.predicted / kLargeShare) {
      Sentence(fmt::format("    from {} to {} ms when all plugins take 5% less or more",
                           Ms(prediction.shortest), Ms(prediction.longest)));
    }
    Sentence("    critical path, in ms: " + Path(prediction.timeline.path));
    Moved(prediction.moved);
  }

  void Advice(const std::string& name, const PhaseAdvice& advice) {
    if (!advice.unknown.empty()) {
      Title("Advice for the " + name);
      return Sentence("  nothing can be predicted: " + advice.unknown);
    }
    Title(
        fmt::format("What the {} of {} ms would gain at most, in ms; gains do not add up, and "
                    "those below {} ms are left out",
                    name, Ms(advice.reproduced), Resolution(advice.resolution)));
    std::vector<std::pair<std::int64_t, std::string>> gains;
    if (advice.poll)
      gains.emplace_back(*advice.poll, "if nothing waited for the next look (poll=0)");
    if (advice.workers) gains.emplace_back(*advice.workers, "with a thread for each plugin");
    for (const PluginGain& gain : advice.plugins) {
      gains.emplace_back(gain.gain, "if the work of " + Name(gain.plugin) + " took no time");
    }
    for (const EdgeGain& gain : advice.edges) {
      gains.emplace_back(gain.gain,
                         "if " + Name(gain.plugin) + " did not depend on " + Name(gain.other));
    }
    std::stable_sort(gains.begin(), gains.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& [gain, change] : gains) Gain(gain, change);
    if (gains.empty()) Sentence("  no single change gains anything");
  }

 private:
  void Sentence(const std::string& text) {
    for (const std::string& line : Wrapped(text, m_style.columns, kSentenceIndent)) {
      m_text += line + "\n";
    }
  }

  void Title(const std::string& text) {
    m_text += "\n";
    for (const std::string& line : Wrapped(text, m_style.columns, kSentenceIndent)) {
      m_text += (m_style.color ? kBold + line + kPlain : line) + "\n";
    }
  }

  void Gain(std::int64_t gain, const std::string& change) {
    Sentence(PadLeft(Ms(gain), kNumberColumns) + "  " + change);
  }

  std::string Name(std::size_t plugin) const { return ShownID(m_timeline.plugins[plugin].id); }

  std::string Ms(std::int64_t nanoseconds) const {
    return MsText(nanoseconds, m_timeline.run.resolution);
  }

  /// Never shown as 0.
  std::string Resolution(std::int64_t nanoseconds) const {
    return Ms(std::max(nanoseconds, kLeastShown));
  }

  std::string Difference(const PhasePrediction& prediction) const {
    const std::int64_t gain = prediction.Gain();
    if (std::abs(gain) <= prediction.resolution) return "no difference";
    const double share = 100 * static_cast<double>(std::abs(gain)) /
                         static_cast<double>(std::max<std::int64_t>(prediction.reproduced, 1));
    return fmt::format("{} ms ({:.1f}%) {}", Ms(std::abs(gain)), share, gain > 0 ? "less" : "more");
  }

  std::string Path(const std::vector<PathStep>& path) const {
    std::string text;
    const std::size_t shown = std::min(path.size(), kMostOfPath);
    for (std::size_t i = 0; i < shown; ++i) {
      text += (i == 0 ? "" : ", ") + Name(path[i].plugin) + " " + Ms(path[i].work);
    }
    if (shown < path.size()) text += fmt::format(" and {} more", path.size() - shown);
    return text;
  }

  void Moved(const std::vector<MovedPlugin>& moved) {
    if (moved.empty()) return;
    Sentence("    begin earlier or later, in ms:");
    for (std::size_t i = 0; i < std::min(moved.size(), kMostMoved); ++i) {
      const std::string by = (moved[i].by < 0 ? "-" : "+") + Ms(std::abs(moved[i].by));
      Sentence(PadLeft(by, kNumberColumns) + "  " + Name(moved[i].plugin));
    }
    if (moved.size() > kMostMoved) {
      Sentence(fmt::format("{}  and {} more", std::string(kNumberColumns, ' '),
                           moved.size() - kMostMoved));
    }
  }

  const Timeline& m_timeline;
  const ReportStyle& m_style;
  std::string m_text;
};

}  // namespace

std::string WhatIfText(const Timeline& timeline, const RunPrediction& prediction,
                       const ReportStyle& style) {
  Writer writer(timeline, style);
  writer.Changes(prediction.changes);
  writer.Prediction("start", prediction.start);
  writer.Prediction("stop", prediction.stop);
  return writer.Take();
}

std::string AdviceText(const Timeline& timeline, const RunAdvice& advice,
                       const ReportStyle& style) {
  Writer writer(timeline, style);
  writer.Advice("start", advice.start);
  writer.Advice("stop", advice.stop);
  return writer.Take();
}
