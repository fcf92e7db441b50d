#pragma once

#include <boost/process/child.hpp>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

/// What one run of HUB left behind.
struct HubResult {
  int status = -1;
  int signal = 0;  // that ended it; 0 for none, and on Windows
  std::string output;
  std::string errors;

  nlohmann::json Json() const { return nlohmann::json::parse(output); }

  /// The lines of `output` as JSON, one object a line.
  std::vector<nlohmann::json> Events() const;
};

/// How a person or the system asks a program to stop: SIGINT, SIGTERM and SIGHUP; on Windows Ctrl-C
/// and the closing of the console window, which stands for both others.
enum class StopKind { kInterrupt, kTerminate, kHangUp };

/// How HUB is run.
struct HubSettings {
  std::string program = TEV_HUB;
  std::filesystem::path state;  // the user's state folder; empty: one of the process's own
  std::vector<std::pair<std::string, std::string>> environment;
  std::filesystem::path folder;  // that it runs in; empty: the test's own
  std::string output;            // a file for standard output; empty: kept for the result
  std::string errors;            // the same for standard error
};

/// HUB as a process, from the constructor on. One that is still running is killed with it.
class HubProcess {
 public:
  explicit HubProcess(const std::string& arguments, const HubSettings& settings = {});
  ~HubProcess();
  HubProcess(const HubProcess&) = delete;
  HubProcess& operator=(const HubProcess&) = delete;

  /// Waits until `text` stands in `content`. False when it has not come after half a minute, or
  /// when HUB has ended without it.
  bool Await(const std::function<std::string()>& content, const std::string& text);

  /// The same of standard output, and of standard error.
  bool AwaitOutput(const std::string& text);
  bool AwaitErrors(const std::string& text);

  bool AwaitFile(const std::filesystem::path& file, const std::string& text);

  /// The same of the one flight record in its state folder.
  bool AwaitRecord(const std::string& text);

  void RequestStop(StopKind how);
  int Id() const { return static_cast<int>(m_process.id()); }
  HubResult Wait();

  /// The user's state folder that it has.
  const std::filesystem::path& State() const { return m_state; }

 private:
  TemporaryFolder m_folder;
  std::filesystem::path m_state;
  boost::process::child m_process;
};

/// Runs HUB with these arguments to its end.
HubResult RunHub(const std::string& arguments, const HubSettings& settings = {});

/// Copies HUB and the libraries beside it, without the frame's, to `folder`. The program there.
std::string CopyHubWithoutFrame(const std::filesystem::path& folder);

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
