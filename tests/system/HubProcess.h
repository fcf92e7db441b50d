#pragma once

#include <boost/process/child.hpp>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

/// The result of a run of HUB.
struct HubResult {
  int status = -1;
  int signal = 0;  // the signal that ended it; 0 for none, and on Windows
  std::string output;
  std::string errors;

  nlohmann::json Json() const { return nlohmann::json::parse(output); }

  /// The lines of `output`, each parsed as a JSON object.
  std::vector<nlohmann::json> Events() const;
};

/// How a user or the system requests a stop: SIGINT, SIGTERM, SIGHUP; on Windows Ctrl-C for the
/// first and the closing of the console window for the others.
enum class StopKind { kInterrupt, kTerminate, kHangUp };

/// How HUB is run.
struct HubSettings {
  std::string program;          // empty: the HUB of the build
  std::filesystem::path state;  // the user's state folder; empty: a new folder
  std::vector<std::pair<std::string, std::string>> environment;
  std::filesystem::path folder;  // working directory; empty: that of the test
  std::filesystem::path record;  // for --record; empty: HUB's record lies in the state folder
  std::string output;            // a file for standard output; empty: HubResult::output gets it
  std::string errors;            // a file for standard error; empty: HubResult::errors gets it
};

/// A process that runs HUB. The constructor starts it; the destructor kills it if it still runs.
class HubProcess {
 public:
  explicit HubProcess(const std::string& arguments, const HubSettings& settings = {});
  ~HubProcess();
  HubProcess(const HubProcess&) = delete;
  HubProcess& operator=(const HubProcess&) = delete;

  /// Waits until `content` contains `text`. False when it still does not after half a minute, or
  /// after HUB has ended.
  bool Await(const std::function<std::string()>& content, const std::string& text);

  /// The same for standard output, and for standard error.
  bool AwaitOutput(const std::string& text);
  bool AwaitErrors(const std::string& text);

  bool AwaitFile(const std::filesystem::path& file, const std::string& text);

  /// The same for HUB's flight record.
  bool AwaitRecord(const std::string& text);

  /// Waits for this event of a plugin in the record.
  bool AwaitEvent(const std::string& event, const std::string& plugin);

  /// Waits for the event `up`, in the record or, with --events, on standard output.
  bool AwaitUp();

  void RequestStop(StopKind how);
  int Id() const { return static_cast<int>(m_process.id()); }

  /// Waits for HUB's end. A HUB that does not end within a minute is killed and fails the test.
  HubResult Wait();

  /// The user's state folder for this HUB.
  const std::filesystem::path& State() const { return m_state; }

 private:
  std::string Record() const;

  TemporaryFolder m_folder;
  std::filesystem::path m_state;
  std::filesystem::path m_record;                       // HubSettings::record
  std::vector<std::filesystem::path> m_earlierRecords;  // in the state folder, before this HUB's
  boost::process::child m_process;
};

/// Runs HUB with these arguments and waits for its end.
HubResult RunHub(const std::string& arguments, const HubSettings& settings = {});

/// Runs HUB with these arguments of `run` and stops it once the product is up. The record must be
/// that of the settings, or the arguments have --events.
HubResult RunHubUntilUp(const std::string& arguments, const HubSettings& settings = {});

/// The flight records in a user's state folder, sorted by their names.
std::vector<std::filesystem::path> RecordsBelow(const std::filesystem::path& state);

/// Copies HUB and the libraries beside it, but not the frame's, to `folder`. Returns the program's
/// path there.
std::string CopyHubWithoutFrame(const std::filesystem::path& folder);

/// A copy of the sample product in a new folder, which a test may modify.
class SiteCopy {
 public:
  explicit SiteCopy(const std::filesystem::path& name = "site");

  /// The folder for --bin, quoted for the command line.
  std::string Bin() const;
  std::filesystem::path Path(const std::string& relative) const { return m_root / relative; }

  void Write(const std::string& relative, const std::string& content) const;
  std::string Read(const std::string& relative) const;
  void Remove(const std::string& relative) const;

 private:
  TemporaryFolder m_folder;
  std::filesystem::path m_root;
};
