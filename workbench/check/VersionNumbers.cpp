#include "workbench/check/VersionNumbers.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// The parts without leading zeros, so that a longer one is greater; empty when one is no number.
std::vector<std::string> Parts(const std::string& version) {
  std::vector<std::string> parts;
  std::size_t at = 0;
  while (at <= version.size()) {
    const std::size_t end = std::min(version.find('.', at), version.size());
    const std::string part = version.substr(at, end - at);
    if (part.empty() || !std::all_of(part.begin(), part.end(), IsDigit)) return {};
    parts.push_back(part.substr(std::min(part.find_first_not_of('0'), part.size() - 1)));
    at = end + 1;
  }
  return parts;
}

/// Compares the first `size` parts; a missing one counts as 0.
int CompareParts(std::vector<std::string> a, std::vector<std::string> b, std::size_t size) {
  a.resize(size, "0");
  b.resize(size, "0");
  for (std::size_t i = 0; i < size; ++i) {
    if (a[i].size() != b[i].size()) return a[i].size() < b[i].size() ? -1 : 1;
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  }
  return 0;
}

}  // namespace

std::optional<int> CompareVersions(const std::string& a, const std::string& b) {
  const std::vector<std::string> ofA = Parts(a);
  const std::vector<std::string> ofB = Parts(b);
  if (ofA.empty() || ofB.empty()) return std::nullopt;
  return CompareParts(ofA, ofB, std::max(ofA.size(), ofB.size()));
}

bool IsAboveAsNumbers(const std::string& a, const std::string& b) {
  const std::vector<std::string> ofA = Parts(a);
  const std::vector<std::string> ofB = Parts(b);
  return CompareParts(ofA, ofB, std::min(ofA.size(), ofB.size())) > 0;
}

std::string ThreeParts(const std::string& version) {
  std::string text;
  std::size_t count = 0;
  for (std::size_t at = 0; at < version.size() && count < 3;) {
    const std::size_t end = std::min(version.find('.', at), version.size());
    if (end > at) text += (count++ == 0 ? "" : ".") + version.substr(at, end - at);
    at = end + 1;
  }
  return count < 3 ? std::string() : text;
}
