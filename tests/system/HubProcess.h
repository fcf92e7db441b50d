#pragma once

#include <boost/process/child.hpp>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/support/TemporaryFolder.h"

/// What one run of HUB left behind.
struct HubResult {
  int status = -1;
  std::string output;
  std::string errors;

  nlohmann::json Json() const { return nlohmann::json::parse(output); }
};

/// How a person or the system asks a program to stop: SIGINT and SIGTERM, or Ctrl-C and the closing
/// of the console window.
enum class StopWish { kInterrupt, kTerminate };

/// HUB as a process, from the constructor on.
class HubProcess {
 public:
  /// Runs `program` with these arguments.
  explicit HubProcess(const std::string& arguments, const std::string& program = TEV_HUB);

  void AskToStop(StopWish wish);
  HubResult Wait();

 private:
  TemporaryFolder m_folder;
  boost::process::child m_process;
};

/// Runs HUB with these arguments to its end.
HubResult RunHub(const std::string& arguments);

/// A copy of the sample product in a folder of its own, to be broken by a test.
class SiteCopy {
 public:
  explicit SiteCopy(const std::filesystem::path& name = "site");

  /// The folder that HUB takes as --bin, quoted for the command line.
  std::string Bin() const;
  std::filesystem::path Path(const std::string& relative) const { return m_root / relative; }

  void Write(const std::string& relative, const std::string& content) const;
  std::string Read(const std::string& relative) const;
  void Remove(const std::string& relative) const;

 private:
  TemporaryFolder m_folder;
  std::filesystem::path m_root;
};
