#include <set>

#include "workbench/check/FileHints.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

const char* Loss(const CheckedFile& file, bool isRequired) {
  if (isRequired) return "the frame refuses the product, and nothing starts";
  switch (file.kind) {
    case FileKind::kInstalled:
      return "no addon and no tool counts as installed";
    case FileKind::kAddonList:
      return "no addon is read, not even an installed one";
    case FileKind::kToolList:
      return "no tool is read, not even an installed one";
    case FileKind::kAddon:
      return "the addon does not count as installed";
    case FileKind::kTool:
      return "the tool does not count as installed";
    default:
      return "the addon that lists this plugin is skipped";
  }
}

std::string WaitsFor(const CheckedFile& file) {
  return (file.missing ? "does not exist, and " + file.standIn + " beside it is a pipe"
                       : file.problem) +
         ": the frame waits until somebody writes into it, perhaps for ever";
}

/// The files without which the frame refuses the product.
std::set<const CheckedFile*> RequiredFiles(const CheckedProduct& product) {
  std::set<const CheckedFile*> required;
  for (const FileKind kind :
       {FileKind::kProduct, FileKind::kDrivers, FileKind::kPortal, FileKind::kPlatform}) {
    required.insert(&product.File(kind));
  }
  for (const PluginEntry& entry : product.entries) {
    if (entry.addon == nullptr) required.insert(entry.descriptionFile);
  }
  return required;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const std::set<const CheckedFile*> required = RequiredFiles(product);
  for (const CheckedFile& file : product.files) {
    const bool isRead = file.missing || !file.readName.empty();
    if (isRead && !file.isPipe) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file);
    finding.refused = required.count(&file) != 0 && !file.isPipe;
    finding.message =
        file.isPipe ? WaitsFor(file) : WhyUnreadable(file) + ": " + Loss(file, finding.refused);
    finding.subject = file.name;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(UnreadableFile) = {"TEV102",
                            Severity::kError,
                            "A model file is there but cannot be read",
                            "The file is empty, a folder, not readable by this user, or larger "
                            "than 2 GB, and no .data file of the same name stands in for it. The "
                            "frame treats it as missing. At a pipe the frame waits until somebody "
                            "writes into it, so it is not asked what it makes of the product.",
                            "An empty META_INFO/Platform.xml",
                            "Restore the file, or give it the permissions of the files beside it.",
                            &Check};
