#pragma once

#include <string>
#include <vector>

/// The one of `candidates` that `word` was probably meant to be: another letter case, or a few
/// letters wrong, missing, doubled or exchanged, fewer for short words. Empty for none, and when
/// `word` itself is among them. Of several equally near ones the first.
std::string Nearest(const std::string& word, const std::vector<std::string>& candidates);

/// "; did you mean "storage.server"?"; empty when nothing is near.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates);
