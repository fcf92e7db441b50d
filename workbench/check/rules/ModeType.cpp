#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "workbench/check/PortalItems.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

std::string WithoutType(const XmlNode& mode) {
  return Tag(mode.name) + " has no <Type>: it reads as -1" +
         (mode.Attribute("Type") == nullptr
              ? ""
              : "; the attribute Type is not read here, write an element <Type>");
}

std::string SecondOfType(const XmlNode& mode, const std::string& where, int type) {
  return "two " + Tag(mode.name) + " of " + where + " have the <Type> " + std::to_string(type) +
         ": the frame hands on both";
}

std::string Subject(const XmlNode& mode, const std::string& where, const std::string& type) {
  return where + " " + mode.name + " " + type;
}

/// Checks the types of modes that stand beside each other in `where`.
void CheckTypes(const CheckedFile& file, const std::vector<const XmlNode*>& modes,
                const std::string& where, RuleFindings& findings) {
  std::map<int, Place> first;
  for (const XmlNode* mode : modes) {
    const std::string& text = TextAt(*mode, "Type");
    RuleFinding finding;
    finding.place = PlaceAt(file, *mode, "Type");
    finding.subject = Subject(*mode, where, text);
    if (text.empty()) {
      finding.message = WithoutType(*mode);
    } else {
      const int type = std::atoi(text.c_str());
      const auto [known, isFirst] = first.emplace(type, finding.place);
      if (isFirst) continue;
      finding.message = SecondOfType(*mode, where, type);
      finding.related.push_back({known->second, "the first one"});
    }
    findings.push_back(std::move(finding));
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kPortal);
  const PortalItems portal = ReadPortalItems(file);
  std::vector<const XmlNode*> modes;
  for (const PortalModeNode& mode : portal.modes) {
    modes.push_back(mode.node);
    std::vector<const XmlNode*> scenes;
    for (const PortalScene& scene : mode.scenes) scenes.push_back(scene.node);
    const std::string& type = TextAt(*mode.node, "Type");
    CheckTypes(file, scenes, "<PortalMode> " + (type.empty() ? "without a <Type>" : type),
               findings);
  }
  CheckTypes(file, modes, "the portal", findings);
}

}  // namespace

TEV_RULE(ModeType) = {
    "TEV603",
    Severity::kWarning,
    "Two modes of the portal, or two scenes of one mode, have the same type, or one has none",
    "The number in <Type> distinguishes the modes of the portal, and the scenes of one mode. The "
    "frame hands on every mode as it stands, with -1 for a <Type> that is missing or empty, and 0 "
    "for a word. Which of two modes with one number is used is up to the portal.",
    "two <SceneMode> of one <PortalMode> with <Type>10</Type>",
    "Give each mode, and each scene of a mode, a <Type> of its own.",
    &Check};
