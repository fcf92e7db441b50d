#include "tests/system/HubProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/process/cmd.hpp>
#include <boost/process/env.hpp>
#include <boost/process/environment.hpp>
#include <boost/process/io.hpp>
#include <boost/process/start_dir.hpp>
#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "reference/os/LocalText.h"
#include "tests/system/StopProcess.h"

namespace fs = std::filesystem;
namespace bp = boost::process;

namespace {

constexpr std::chrono::seconds kLongestWait{30};
constexpr std::chrono::seconds kLongestEnding{60};
constexpr std::chrono::milliseconds kBetweenLooks{10};

std::string Content(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  std::string text = content.str();
  // Windows' text files have "\r\n".
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

std::string LinesWith(const std::string& part, const std::string& text) {
  std::string found;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.find(part) != std::string::npos) found += line + "\n";
  }
  return found;
}

/// Waits until `holds` returns true. False when it does not within `limit`.
bool PollUntil(const std::function<bool()>& holds, std::chrono::seconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(kBetweenLooks);
  }
  return true;
}

std::string RecordOption(const fs::path& record) {
  return record.empty() ? std::string() : " --record \"" + LocalFromPath(record) + "\"";
}

bp::environment Environment(const HubSettings& settings, const fs::path& state) {
  bp::environment environment = boost::this_process::environment();
  environment["XDG_STATE_HOME"] = LocalFromPath(state);
  environment["LOCALAPPDATA"] = LocalFromPath(state);
  for (const auto& variable : settings.environment) environment[variable.first] = variable.second;
  return environment;
}

std::string StartFolder(const HubSettings& settings) {
  return LocalFromPath(settings.folder.empty() ? fs::current_path() : settings.folder);
}

}  // namespace

std::vector<nlohmann::json> HubResult::Events() const {
  std::vector<nlohmann::json> events;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) events.push_back(nlohmann::json::parse(line));
  return events;
}

HubProcess::HubProcess(const std::string& arguments, const HubSettings& settings)
    : m_state(settings.state.empty() ? m_folder.Path() / "state" : settings.state),
      m_record(settings.record),
      m_earlierRecords(RecordsBelow(m_state)),
      m_process("\"" + (settings.program.empty() ? TEV_HUB : settings.program) + "\" " + arguments +
                    RecordOption(m_record),
                bp::std_in<bp::null, bp::std_out>(settings.output.empty() ? m_folder / "out"
                                                                          : settings.output),
                bp::std_err > (settings.errors.empty() ? m_folder / "err" : settings.errors),
                bp::start_dir(StartFolder(settings)), Environment(settings, m_state)) {}

HubProcess::~HubProcess() {
  std::error_code ignored;
  if (m_process.running(ignored)) m_process.terminate(ignored);
}

bool HubProcess::AwaitOutput(const std::string& text) {
  return Await([this] { return Content(m_folder / "out"); }, text);
}

bool HubProcess::AwaitErrors(const std::string& text) {
  return Await([this] { return Content(m_folder / "err"); }, text);
}

bool HubProcess::AwaitFile(const fs::path& file, const std::string& text) {
  return Await([&file] { return Content(file); }, text);
}

bool HubProcess::AwaitRecord(const std::string& text) {
  return Await([this] { return Record(); }, text);
}

bool HubProcess::AwaitEvent(const std::string& event, const std::string& plugin) {
  return Await([&] { return LinesWith(R"("event":")" + event + "\"", Record()); },
               R"("plugin":")" + plugin + "\"");
}

bool HubProcess::AwaitUp() {
  return Await([this] { return Record() + Content(m_folder / "out"); }, R"("event":"up")");
}

bool HubProcess::Await(const std::function<std::string()>& content, const std::string& text) {
  bool found = false;
  PollUntil(
      [&] {
        const bool running = m_process.running();
        found = content().find(text) != std::string::npos;
        return found || !running;
      },
      kLongestWait);
  return found;
}

std::string HubProcess::Record() const {
  if (!m_record.empty()) return Content(m_record);
  std::string records;
  for (const fs::path& file : RecordsBelow(m_state)) {
    const bool isEarlier =
        std::binary_search(m_earlierRecords.begin(), m_earlierRecords.end(), file);
    if (!isEarlier) records += Content(file);
  }
  return records;
}

void HubProcess::RequestStop(StopKind how) {
  StopProcess(m_process, how);
}

HubResult HubProcess::Wait() {
  const bool ended = PollUntil([this] { return !m_process.running(); }, kLongestEnding);
  if (!ended) m_process.terminate();
  HubResult result = {m_process.exit_code(), EndingSignal(m_process), Content(m_folder / "out"),
                      Content(m_folder / "err")};
  if (!ended) {
    ADD_FAILURE() << "HUB was killed: it did not end within " << kLongestEnding.count()
                  << " s. Its output so far:\n"
                  << result.output << "Its errors so far:\n"
                  << result.errors;
  }
  return result;
}

HubResult RunHub(const std::string& arguments, const HubSettings& settings) {
  return HubProcess(arguments, settings).Wait();
}

HubResult RunHubUntilUp(const std::string& arguments, const HubSettings& settings) {
  HubProcess hub("run " + arguments, settings);
  if (hub.AwaitUp()) hub.RequestStop(StopKind::kInterrupt);
  return hub.Wait();
}

std::vector<fs::path> RecordsBelow(const fs::path& state) {
  std::vector<fs::path> records;
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(state, error)) {
    if (entry.path().extension() == ".jsonl") records.push_back(entry.path());
  }
  std::sort(records.begin(), records.end());
  return records;
}

std::string CopyHubWithoutFrame(const fs::path& folder) {
  const fs::path hub = PathFromLocal(TEV_HUB);
  const fs::path frame = PathFromLocal(TEV_FRAME);
  for (const auto& file : fs::directory_iterator(hub.parent_path())) {
    const bool isLibrary = file.path().extension() == frame.extension();
    if (file.path().filename() == hub.filename() ||
        (isLibrary && file.path().filename() != frame.filename())) {
      fs::copy_file(file.path(), folder / file.path().filename());
    }
  }
  return LocalFromPath(folder / hub.filename());
}

SiteCopy::SiteCopy(const fs::path& name) : m_root(m_folder.Path() / name) {
  fs::copy(TEV_SITE, m_root, fs::copy_options::recursive);
}

std::string SiteCopy::Bin() const {
  return "\"" + LocalFromPath(m_root / "bin") + "\"";
}

void SiteCopy::Write(const std::string& relative, const std::string& content) const {
  fs::create_directories((m_root / relative).parent_path());
  std::ofstream(m_root / relative, std::ios::binary) << content;
}

std::string SiteCopy::Read(const std::string& relative) const {
  return Content(m_root / relative);
}

void SiteCopy::Remove(const std::string& relative) const {
  fs::remove_all(m_root / relative);
}
