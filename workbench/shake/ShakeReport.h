#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "workbench/shake/ShakeAnalysis.h"

/// Where a plugin's dependencies are declared.
struct DeclarationPlace {
  std::string file;  // relative to the product's folder, with "/" between names
  int line = 0;      // of its list of dependencies, or else of its first element
};

/// What `HUB shake` has found.
struct ShakeReport {
  std::string toolVersion;
  std::string productName;  // empty when it is not known
  std::string productVersion;
  std::string bin;              // the folder given by --bin; empty: not given
  std::string shownFolder;      // of the product, before the names of its files; ends in "/"
  std::string folder;           // absolute, with "/" between names: of META_INFO
  std::size_t plugins = 0;      // that the frame starts
  std::size_t runs = 0;         // that were evaluated
  std::size_t runsNotMade = 0;  // because it was stopped or the time was up
  std::size_t badRecords = 0;   // runs that left no record that can be read
  double seconds = 0;
  std::string stoppedBy;  // "SIGINT"; empty: by nobody
  ShakeAnalysis analysis;
  std::map<std::string, DeclarationPlace> places;  // by plugin; only those that are known

  /// Whether a plugin's result depends on the order, or changes without a known reason.
  bool HasFindings() const { return !analysis.missing.empty() || !analysis.unexplained.empty(); }
};

std::string ShakeText(const ShakeReport& report);

/// One JSON object, described by shake.schema.json.
std::string ShakeJson(const ShakeReport& report);
