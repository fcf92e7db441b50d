#include <algorithm>
#include <iterator>
#include <tuple>

#include "workbench/check/Rule.h"

// A row for each rule; the name is that of its file in rules/ and, after "k", of its constant.
#define TEV_RULES(RULE)         \
  /* TEV1xx, files */           \
  RULE(MissingFile)             \
  RULE(UnreadableFile)          \
  RULE(NotWellFormed)           \
  RULE(WrongRoot)               \
  RULE(InNamespace)             \
  RULE(NotUtf8)                 \
  RULE(StandIn)                 \
  RULE(DeclaredEncoding)        \
  RULE(TooLong)                 \
  RULE(MisspeltElement)         \
  RULE(MisspeltAttribute)       \
  RULE(Misplaced)               \
  RULE(SecondSection)           \
  RULE(ReadOnce)                \
  RULE(FlagValue)               \
  RULE(NumberValue)             \
  RULE(StrayText)               \
  RULE(UnreadFile)              \
  RULE(NotRead)                 \
  RULE(RequiredValue)           \
  RULE(BlankEnds)               \
  RULE(PrefixedAttribute)       \
  RULE(DocumentType)            \
  RULE(LongFile)                \
  RULE(OtherThanSchema)         \
  /* TEV2xx, plugins */         \
  RULE(NoDescription)           \
  RULE(UnlistedDescription)     \
  RULE(OtherID)                 \
  RULE(DescriptionWithoutID)    \
  RULE(IDNoFileName)            \
  RULE(OtherLetterCase)         \
  RULE(DoubledPlugin)           \
  RULE(VersionAsText)           \
  RULE(WrongType)               \
  RULE(TypeAndFiles)            \
  RULE(DriverAsPlugin)          \
  RULE(DoubledSubPlatform)      \
  RULE(SubPlatformWithoutID)    \
  RULE(EntryWithoutID)          \
  RULE(ManyPlugins)             \
  RULE(AddonCategory)           \
  RULE(OtherVersion)            \
  RULE(NothingStarts)           \
  RULE(DroppedByModule)         \
  RULE(ReplacedByAddon)         \
  RULE(CopiedID)                \
  /* TEV3xx, dependencies */    \
  RULE(UnknownDependency)       \
  RULE(UnstartedDependency)     \
  RULE(VersionAbove)            \
  RULE(UnorderedType)           \
  RULE(RepeatedDependency)      \
  RULE(DependencyOnItself)      \
  RULE(DependencyCycle)         \
  RULE(NamelessDependency)      \
  RULE(PlatformCategory)        \
  RULE(StartedPlatform)         \
  RULE(LostGroup)               \
  RULE(OtherPlatform)           \
  RULE(OtherDependentType)      \
  /* TEV4xx, libraries */       \
  RULE(MissingLibrary)          \
  RULE(LibraryInOtherCase)      \
  RULE(NoLibrary)               \
  RULE(LibraryForOtherSystem)   \
  RULE(NoInit)                  \
  RULE(NoUnInit)                \
  RULE(MangledEntry)            \
  RULE(EntryIsNoFunction)       \
  RULE(NeededLibraryMissing)    \
  RULE(NeededLibraryBeside)     \
  RULE(SharedLibraryFile)       \
  RULE(WritableLibrary)         \
  RULE(MissingSymbols)          \
  RULE(ImportWithoutDependency) \
  RULE(DependencyWithoutImport) \
  RULE(UnusableProgram)         \
  /* TEV5xx, the catalogue */   \
  RULE(UnknownProduct)          \
  RULE(LowProductVersion)       \
  RULE(IncompatibleAddon)       \
  RULE(CrossedVersions)         \
  RULE(NoAddonDescription)      \
  RULE(OtherAddonDescribed)     \
  RULE(ReplacedAddonMissing)    \
  RULE(AddonWithoutID)          \
  RULE(UnknownSupportedProduct) \
  RULE(MissingPackage)          \
  RULE(WrongChecksum)           \
  RULE(MissingCatalogue)        \
  RULE(DoubledAddon)            \
  RULE(InstalledVersion)        \
  RULE(HighestVersionPassed)    \
  RULE(ReplacementNotRead)      \
  /* TEV6xx, the portal */      \
  RULE(UnknownMenuItem)         \
  RULE(ItemWithoutItems)        \
  RULE(ModeType)                \
  RULE(SharedPermission)

#define TEV_DECLARE(name) extern const Rule k##name;
TEV_RULES(TEV_DECLARE)
#undef TEV_DECLARE

const std::vector<const Rule*>& AllRules() {
#define TEV_ADDRESS(name) &k##name,
  static const std::vector<const Rule*> rules = {TEV_RULES(TEV_ADDRESS)};
#undef TEV_ADDRESS
  return rules;
}

const Rule* FindRule(const std::string& id) {
  const auto& rules = AllRules();
  const auto found =
      std::find_if(rules.begin(), rules.end(), [&](const Rule* rule) { return rule->id == id; });
  return found == rules.end() ? nullptr : *found;
}

RuleFindings RunRules(const std::vector<const Rule*>& rules, const CheckedProduct& product) {
  RuleFindings findings;
  for (const Rule* rule : rules) {
    const std::size_t before = findings.size();
    rule->check(product, findings);
    for (std::size_t i = before; i < findings.size(); ++i) {
      findings[i].rule = rule->id;
      findings[i].severity = rule->severity;
    }
  }
  const auto order = [](const RuleFinding& finding) {
    return std::tie(finding.place.file, finding.place.line, finding.place.column, finding.rule,
                    finding.message);
  };
  std::stable_sort(findings.begin(), findings.end(),
                   [&](const RuleFinding& a, const RuleFinding& b) { return order(a) < order(b); });
  const auto same = [&](const RuleFinding& a, const RuleFinding& b) {
    return order(a) == order(b);
  };
  findings.erase(std::unique(findings.begin(), findings.end(), same), findings.end());
  return findings;
}
