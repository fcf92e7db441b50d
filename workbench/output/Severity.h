#pragma once

/// How bad a finding is: what is wrong with a product or with its run.
enum class Severity {
  kNote,     // nothing is lost
  kWarning,  // something is lost, but no plugin
  kError     // a plugin is lost or never starts, or a model file reads as empty
};

/// As records, logs and JSON have it.
constexpr const char* Word(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kWarning:
      return "warning";
    case Severity::kError:
      return "error";
  }
  return "";
}
