#include "workbench/check/Suggestions.h"

#include <utility>

#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

constexpr std::size_t kMostComparisons = 1000000;

}  // namespace

Suggestions::Suggestions(std::vector<std::string> candidates)
    : m_candidates(std::move(candidates)) {}

const std::string& Suggestions::For(const std::string& name) {
  const auto [known, isNew] = m_known.emplace(name, std::string());
  if (isNew && m_comparisons < kMostComparisons) {
    known->second = Nearest(name, m_candidates);
    m_comparisons += m_candidates.size();
  }
  return known->second;
}

std::string Suggestions::DidYouMean(const std::string& name) {
  const std::string& meant = For(name);
  return meant.empty() ? std::string() : "; did you mean " + Quoted(meant) + "?";
}
