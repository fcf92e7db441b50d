#include "workbench/output/LetterCase.h"

#include <algorithm>

namespace {

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::string Lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), Lower);
  return text;
}

bool SameButCase(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return Lower(x) == Lower(y); });
}
