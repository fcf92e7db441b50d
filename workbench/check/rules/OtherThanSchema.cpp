#include <algorithm>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "workbench/check/Rule.h"
#include "workbench/check/SchemaCheck.h"
#include "workbench/check/Words.h"

extern const Rule kOtherThanSchema;

namespace {

using Places = std::set<std::tuple<std::string, int, int>>;

void Add(const Place& place, Places& places) {
  places.insert({place.file, place.line, place.column});
}

bool Contains(const Places& places, const Place& place) {
  return place.line != 0 && places.count({place.file, place.line, place.column}) != 0;
}

/// The places of which another rule says something, whether it was asked for or not.
Places PlacesOfOtherRules(const CheckedProduct& product) {
  std::vector<const Rule*> others;
  for (const Rule* rule : AllRules()) {
    if (rule != &kOtherThanSchema) others.push_back(rule);
  }
  Places places;
  for (const RuleFinding& finding : RunRules(others, product)) {
    Add(finding.place, places);
    for (const RelatedPlace& related : finding.related) Add(related.place, places);
  }
  return places;
}

struct Refusal {
  const CheckedFile* file = nullptr;
  SchemaError error;

  /// Other rules say it of the place itself; of an element also when they say it of its text or of
  /// what is directly in it.
  bool IsAmong(const Places& places) const {
    const auto isKnown = [&](const TextPlace& place) {
      return Contains(places, PlaceOf(*file, place));
    };
    const auto isPartKnown = [&](const auto& part) { return isKnown(part.place); };
    const XmlNode& node = *error.node;
    const bool ofAttribute = std::any_of(node.attributes.begin(), node.attributes.end(),
                                         [&](const XmlAttribute& attribute) {
                                           return attribute.place.line == error.place.line &&
                                                  attribute.place.column == error.place.column;
                                         });
    if (ofAttribute) return isKnown(error.place);
    return isKnown(error.place) || isKnown(node.place) || isKnown(node.textPlace) ||
           std::any_of(node.attributes.begin(), node.attributes.end(), isPartKnown) ||
           std::any_of(node.children.begin(), node.children.end(), isPartKnown);
  }
};

std::vector<Refusal> Refusals(const CheckedProduct& product) {
  std::vector<Refusal> refusals;
  for (const CheckedFile& file : product.files) {
    if (!file.HasContent()) continue;
    for (SchemaError& error : ValidateAgainstSchema(file.kind, file.tree)) {
      refusals.push_back({&file, std::move(error)});
    }
  }
  return refusals;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const std::vector<Refusal> refusals = Refusals(product);
  if (refusals.empty()) return;
  const Places known = PlacesOfOtherRules(product);
  for (const Refusal& refusal : refusals) {
    // The rules on names report all elements and attributes of one name together.
    if (refusal.error.isUnknownName || refusal.IsAmong(known)) continue;
    RuleFinding finding;
    finding.place = PlaceOf(*refusal.file, refusal.error.place);
    finding.message = refusal.error.message + "; " + refusal.error.effect;
    finding.subject = refusal.error.message;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(OtherThanSchema) = {
    "TEV130",
    Severity::kNote,
    "A file is other than its schema has it, where no other rule says why",
    "The schemas in the folder schemas/ allow what the frame reads as it was meant. The frame "
    "itself does not use them: it reads what it finds, takes defaults for the rest, and reports "
    "nothing. This rule reports what a schema refuses at a place of which no other rule says "
    "anything, selected or not, and what the frame makes of it: mostly nothing is lost.",
    R"(<Language ID="en"/> twice in <Languages>)",
    "Change the file as the message says, or check it with xmllint and the schema that "
    "docs/model-files.md names.",
    &Check};
