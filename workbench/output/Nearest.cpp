#include "workbench/output/Nearest.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>

#include "workbench/output/LetterCase.h"

namespace {

/// How many letters may differ for a word of this length to be the same word misspelt.
std::size_t MostChanges(std::size_t length) {
  if (length < 3) return 0;
  if (length < 6) return 1;
  return length < 12 ? 2 : 3;
}

/// A lower bound of the distance, from the counts of the letters alone.
bool MayBeWithin(const std::string& a, const std::string& b, std::size_t most) {
  if (a.size() > b.size() + most || b.size() > a.size() + most) return false;
  std::array<int, 64> counts = {};
  for (const char c : a) ++counts[static_cast<unsigned char>(c) % counts.size()];
  for (const char c : b) --counts[static_cast<unsigned char>(c) % counts.size()];
  int difference = 0;
  for (const int count : counts) difference += std::abs(count);
  return static_cast<std::size_t>(difference) <= 2 * most;
}

/// How many letters must be changed, added, removed or exchanged with their neighbour to make `b`
/// of `a`; any number above `most` when there are more.
std::size_t Distance(const std::string& a, const std::string& b, std::size_t most) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
      const bool exchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (exchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    if (*std::min_element(row.begin(), row.end()) > most) return most + 1;
    before.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

}  // namespace

std::string Nearest(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string lowered = Lowered(word);
  std::size_t best = MostChanges(word.size()) + 1;
  std::string nearest;
  for (const std::string& candidate : candidates) {
    if (candidate == word) return std::string();
    const std::string other = Lowered(candidate);
    if (best == 0 || !MayBeWithin(lowered, other, best - 1)) continue;
    const std::size_t distance = Distance(lowered, other, best - 1);
    if (distance >= best) continue;
    best = distance;
    nearest = candidate;
  }
  return nearest;
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string nearest = Nearest(word, candidates);
  return nearest.empty() ? std::string() : "; did you mean \"" + nearest + "\"?";
}
