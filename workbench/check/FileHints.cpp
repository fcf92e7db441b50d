#include "workbench/check/FileHints.h"

#include <algorithm>
#include <vector>

#include "workbench/check/Words.h"
#include "workbench/output/LetterCase.h"
#include "workbench/output/Nearest.h"

namespace {

/// The names directly in the folder `prefix`, which ends in "/" or is empty, without the prefix.
std::vector<std::string> NamesIn(const CheckedProduct& product, const std::string& prefix) {
  std::vector<std::string> names;
  auto at = std::lower_bound(product.names.begin(), product.names.end(), prefix);
  for (; at != product.names.end() && at->compare(0, prefix.size(), prefix) == 0; ++at) {
    std::string name = at->substr(prefix.size());
    const bool isFolder = !name.empty() && name.back() == '/';
    if (isFolder) name.pop_back();
    if (!name.empty() && name.find('/') == std::string::npos) names.push_back(std::move(name));
  }
  return names;
}

}  // namespace

std::string NameHint(const CheckedProduct& product, const std::string& name,
                     const std::set<std::string>& used) {
  // The first part of the path that does not exist is the one that is spelt otherwise.
  std::size_t begin = 0;
  std::size_t end = name.find('/');
  while (end != std::string::npos && product.Exists(name.substr(0, end + 1))) {
    begin = end + 1;
    end = name.find('/', begin);
  }
  const std::string wanted = name.substr(begin, end - begin);
  std::vector<std::string> names = NamesIn(product, name.substr(0, begin));
  names.erase(std::remove_if(names.begin(), names.end(),
                             [&](const std::string& other) { return used.count(other) != 0; }),
              names.end());
  for (const std::string& other : names) {
    if (other != wanted && SameButCase(other, wanted)) {
      return "; there is " + Quoted(other) + ", with other letter case";
    }
  }
  const std::string nearest = Nearest(wanted, names);
  return nearest.empty() ? std::string() : "; there is " + Quoted(nearest) + ": is that meant?";
}

std::string WhyUnreadable(const CheckedFile& file) {
  return file.problem +
         (file.standInProblem == "does not exist"
              ? ", and there is no " + file.standIn + " beside it that could stand in"
              : ", and " + file.standIn + " beside it, which could stand in, " +
                    file.standInProblem);
}
