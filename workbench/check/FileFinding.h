#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/RuleFinding.h"
#include "workbench/check/Words.h"

// Pieces of the findings on the text of a model file.

/// The ID of the plugin, addon or tool that the file describes, by its name; empty for the others.
std::string DescribedId(const CheckedFile& file);

/// A finding at `place` in the file, about what the file describes. `subject` is what it is about
/// in the file; empty for the file as a whole.
RuleFinding MakeFinding(const CheckedFile& file, const TextPlace& place, std::string message,
                        const std::string& subject = std::string());

/// What it means that the whole file reads as empty: "the whole file reads as empty: the product
/// has no drivers".
std::string ReadsAsEmpty(FileKind kind);

/// Behind the name of something that stands there several times: ", 3 times"; empty for once.
std::string Times(std::size_t number);

/// The text with a capital letter at its beginning, to follow a question mark.
std::string Sentence(std::string text);

/// Adds the places of the second to the fifth of `nodes`, elements or attributes, to the finding.
template <typename Node>
void AddOthers(const CheckedFile& file, const std::vector<const Node*>& nodes,
               RuleFinding& finding) {
  for (std::size_t i = 1; i < nodes.size() && i < 5; ++i) {
    finding.related.push_back({PlaceOf(file, nodes[i]->place), "here too"});
  }
}
