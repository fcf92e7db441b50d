#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// What names of a list were probably meant to be, each looked for once. The time for all names
/// together is bounded: when they and the candidates are very many, the last names get no
/// suggestion. Not thread-safe.
class Suggestions {
 public:
  explicit Suggestions(std::vector<std::string> candidates);

  /// The candidate that is meant; empty for none.
  const std::string& For(const std::string& name);

  /// "; did you mean "alarm.page"?"; empty for none.
  std::string DidYouMean(const std::string& name);

 private:
  const std::vector<std::string> m_candidates;
  std::map<std::string, std::string> m_known;
  std::size_t m_comparisons = 0;
};
