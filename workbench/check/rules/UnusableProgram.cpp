#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

std::string Problem(const PluginLibrary& program) {
  if (program.state == PluginLibrary::State::kMissing) return "does not exist";
  if (program.state != PluginLibrary::State::kGood) return WrongFile(program);
  return program.isExecutable ? std::string() : "may not be executed: it lacks the permission";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, program] : product.libraries) {
    if (!program->isProgram) continue;
    const std::string problem = Problem(*program);
    if (problem.empty()) continue;
    RuleFinding finding = LibraryFinding(id, *program, program->name);
    finding.message = problem + ": " + LossOf(product, id, *program);
    if (program->state == PluginLibrary::State::kMissing && !program->otherCase.empty()) {
      finding.message += "; there is " + Quoted(program->otherCase) + ", with other letter case";
    }
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(UnusableProgram) = {
    "TEV416",
    Severity::kError,
    "The program of an executable plugin is missing or cannot be run",
    "The frame does not start executable plugins itself. It hands the path of the program, the ID "
    "with .exe behind it in the folder of the executables, to the local-procedure-call framework, "
    "which starts it when it is needed. The frame does not look whether the file is there: without "
    "it the product starts, and the fault shows only when the program is called.",
    "media.recorder of type 1, and no bin/media.recorder.exe",
    "Put the program there, built for this system and with the permission to be executed, or "
    "correct the ID; a plugin that has a library instead has the type 2.",
    &Check};
