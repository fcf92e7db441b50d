#include "workbench/check/LibraryWords.h"

#include "workbench/check/Words.h"

RuleFinding LibraryFinding(const std::string& id, const PluginLibrary& library,
                           const std::string& subject) {
  RuleFinding finding;
  finding.place.file = library.name;
  finding.plugin = id;
  finding.subject = subject;
  return finding;
}

std::string LossOf(const CheckedProduct& product, const std::string& id,
                   const PluginLibrary& library) {
  if (library.isProgram) return "the platform cannot start " + Quoted(id);
  if (product.Starts(id)) return Quoted(id) + " is not started";
  return "the platform cannot load the driver " + Quoted(id);
}

std::string WrongFile(const PluginLibrary& library) {
  using State = PluginLibrary::State;
  const std::string kind = library.isProgram ? "program" : "library";
  switch (library.state) {
    case State::kFolder:
      return "is a folder";
    case State::kNoFile:
      return "is no regular file";
    case State::kUnreadable:
      return "cannot be read";
    case State::kEmpty:
      return "is empty";
    case State::kNoLibrary:
      return "is no " + kind + ": neither ELF nor PE";
    case State::kOtherFormat:
      return "has the format " + library.format + ", this system needs " + library.requiredFormat;
    case State::kOtherMachine:
      return "is for " + library.machine + ", this system for " + library.requiredMachine;
    case State::kDamaged:
      return "is cut short or damaged, so that loading it fails or ends the host";
    case State::kOtherKind:
      return library.isProgram ? "is an object file, not a program"
                               : "is a program or an object file, not a library";
    case State::kGood:
    case State::kMissing:
      break;
  }
  return std::string();
}
