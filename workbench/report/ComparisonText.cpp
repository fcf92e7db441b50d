#include "workbench/report/ComparisonText.h"

#include <fmt/format.h>

#include <vector>

#include "workbench/output/Text.h"
#include "workbench/report/Times.h"

namespace {

using Result = PluginSpan::Result;

const char* Words(Result result) {
  switch (result) {
    case Result::kNotBegun:
      return "never began";
    case Result::kNotReturned:
      return "never returned";
    case Result::kOk:
      return "started";
    case Result::kFailed:
      return "failed in Init";
    case Result::kNotLoaded:
      return "was not loaded";
    case Result::kRefused:
      return "refused to stop";
    case Result::kNothingToStop:
      return "had nothing to stop";
    case Result::kNotKnown:
      return "ended, the log does not say how";
  }
  return "";
}

class Writer {
 public:
  Writer(const Comparison& comparison, std::int64_t resolution)
      : m_comparison(comparison), m_resolution(resolution) {}

  std::string Write() {
    m_text = "Against " + Count(m_comparison.runs, "earlier run") + "\n";
    if (m_comparison.sleepsDiffer) {
      m_text +=
          "  note: not all of these runs had --full-sleep, which alone makes a start longer\n";
    }
    for (const TimeChange& change : m_comparison.phases) {
      Change("the " + change.what + " of the plugins", change);
    }
    for (const std::string& phase : m_comparison.incomplete) {
      m_text += "  the " + phase + " of the plugins: not compared, since this run or the earlier " +
                (m_comparison.runs == 1 ? "one does" : "ones do") +
                " not have it from begin to end\n";
    }
    Changes("Slower", m_comparison.slower);
    Changes("Faster", m_comparison.faster);
    Names("New", m_comparison.added);
    Names("Gone", m_comparison.gone);
    Names("Onto the critical path", m_comparison.ontoPath);
    Names("Off the critical path", m_comparison.offPath);
    if (!m_comparison.results.empty()) m_text += "Other results\n";
    for (const ResultChange& change : m_comparison.results) {
      m_text += fmt::format("  {} {}; before, it {}\n", ShownID(change.plugin), Words(change.now),
                            Words(change.before));
    }
    return m_text;
  }

 private:
  void Change(const std::string& name, const TimeChange& change) {
    const std::int64_t difference = change.Difference();
    m_text += fmt::format("  {}: {} ms, before {} ms", name, MsText(change.now, m_resolution),
                          MsText(change.before, m_resolution));
    if (m_comparison.runs > 1) {
      m_text += fmt::format(" ({} to {})", MsText(change.low, m_resolution),
                            MsText(change.high, m_resolution));
    }
    if (!IsChange(change)) {
      m_text += ": no change\n";
      return;
    }
    m_text +=
        fmt::format(": {} ms {}\n", MsText(difference < 0 ? -difference : difference, m_resolution),
                    difference < 0 ? "faster" : "slower");
  }

  void Changes(const char* title, const std::vector<TimeChange>& changes) {
    if (changes.empty()) return;
    m_text += std::string(title) + "\n";
    for (const TimeChange& change : changes) Change(ShownID(change.what), change);
  }

  void Names(const char* title, const std::vector<std::string>& names) {
    if (names.empty()) return;
    m_text += std::string(title) + "\n  " + JoinNames(names, names.size()) + "\n";
  }

  const Comparison& m_comparison;
  const std::int64_t m_resolution;
  std::string m_text;
};

}  // namespace

std::string ComparisonText(const Comparison& comparison, std::int64_t resolution) {
  return Writer(comparison, resolution).Write();
}
