#include "workbench/record/LogRuns.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "workbench/record/FrameLog.h"
#include "workbench/record/HeadLine.h"
#include "workbench/record/HostLine.h"
#include "workbench/record/LogFiles.h"
#include "workbench/record/LogRun.h"
#include "workbench/record/LogStamp.h"

namespace fs = std::filesystem;

namespace {

constexpr char kFrameModule[] = "platform.PluginFrame";
constexpr char kLpcModule[] = "platform.LPCIntegrate";
constexpr char kLoaderModule[] = "platform.os";
constexpr char kHostModule[] = "host";

/// Reads the files of one log, oldest first, and tells its runs apart.
class LogReader {
 public:
  explicit LogReader(const LogOptions& options)
      : m_options(options), m_stamps(options.timeFormat), m_run(options.plugins) {}

  void Read(const fs::path& file) {
    m_file = file;
    m_line = 0;
    VisitLines(file, [this](std::string_view line) {
      ++m_line;
      TakeLine(line);
    });
  }

  std::vector<RecordedRun> Finish() {
    EndRun();
    Throw();
    for (std::size_t i = 0; i < m_runs.size() && m_runs.size() > 1; ++i) {
      RecordedRun& run = m_runs[i];
      run.name += ", run " + std::to_string(i + 1) + " of " + std::to_string(m_runs.size()) + ", " +
                  run.record.head.time;
    }
    return std::move(m_runs);
  }

 private:
  void TakeLine(std::string_view line) {
    if (m_offset < line.size()) {
      if (const auto host = ReadHostLine(line.substr(m_offset))) return TakeHostLine(line, *host);
    }
    auto found = FindFrameLog(line);
    if (!found) return TakeHeadElsewhere(line);
    if (const auto offset = FindHostLine(line.substr(0, found->begin))) {
      m_offset = *offset;
      return TakeHostLine(line, *ReadHostLine(line.substr(m_offset)));
    }
    TakeFrame(line.substr(0, found->begin), std::nullopt, std::move(found->event));
  }

  /// A line of HUB: only here level, thread and module are known.
  void TakeHostLine(std::string_view line, const HostLine& host) {
    const std::string_view prefix = line.substr(0, line.size() - host.moduleAndText.size());
    if (host.module == kFrameModule || host.module == kLpcModule) {
      auto event = ParseFrameLog(host.level, std::string(host.module), std::string(host.text));
      if (event) return TakeFrame(prefix, host.thread, std::move(*event));
    } else if (host.module == kHostModule) {
      return TakeHead(prefix, host.text);
    }
    if (!m_run.Observes(host.thread)) return;
    if (host.module == kLoaderModule) {
      m_run.AddLoader(host.thread, std::string(host.text));
    } else {
      m_run.AddOther(host.thread, std::string(host.moduleAndText));
    }
  }

  /// HUB's first line of a run, behind what who collects its output writes before each line.
  void TakeHeadElsewhere(std::string_view line) {
    constexpr std::size_t kMostBefore = 300;
    if (line.substr(0, kMostBefore).find("] [host] HUB ") == std::string_view::npos) return;
    const auto offset = FindHostLine(line);
    if (!offset) return;
    m_offset = *offset;
    TakeHostLine(line, *ReadHostLine(line.substr(m_offset)));
  }

  void TakeHead(std::string_view prefix, std::string_view text) {
    const auto head = ReadHeadLine(text);
    const auto stamp = head ? Stamp(prefix) : std::nullopt;
    if (!stamp) return;
    EndRun();
    BeginRun();
    m_run.AddHead(*stamp, *head);
  }

  void TakeFrame(std::string_view prefix, std::optional<std::uint64_t> thread, FrameEvent event) {
    m_hasFrameLines = true;
    const auto stamp = Stamp(prefix);
    if (!stamp) {
      if (m_unstamped.empty()) m_unstamped = m_file.u8string() + ":" + std::to_string(m_line);
      return m_run.AddUnstamped();
    }
    if (m_run.EndsBefore(event.kind)) {
      EndRun();
      BeginRun();
    } else if (m_name.empty()) {
      BeginRun();
    }
    m_run.AddFrame(*stamp, thread, std::move(event));
  }

  /// The stamp before a line's text. HUB's stands last, behind those of who collects its output.
  std::optional<LogStamp> Stamp(std::string_view prefix) {
    if (m_offset > 0 && m_offset < prefix.size()) prefix.remove_prefix(m_offset);
    return m_stamps.Find(prefix);
  }

  void BeginRun() { m_name = m_file.u8string(); }

  void EndRun() {
    if (m_run.HasFrameLines()) {
      m_runs.push_back(m_run.Finish());
      m_runs.back().name = m_name;
    }
    m_run = LogRun(m_options.plugins);
    m_name.clear();
  }

  void Throw() const {
    if (!m_runs.empty()) return;
    if (!m_hasFrameLines) {
      throw std::runtime_error(m_file.u8string() +
                               " is neither a flight record nor a log with a line of the frame");
    }
    if (m_unstamped.empty()) {
      throw std::runtime_error(m_file.u8string() +
                               ": behind HUB's first line of a run there is no line of the frame "
                               "as HUB writes it; what there is another program wrote");
    }
    throw std::runtime_error(
        m_unstamped + ": " +
        (m_options.timeFormat.empty()
             ? "no time stamp is found in this line of the frame; --time-format says how it is "
               "written, such as --time-format '%d/%m/%Y %H:%M:%S'"
             : "the line's time stamp is not written as --time-format says, " +
                   m_options.timeFormat));
  }

  const LogOptions& m_options;
  LogStamps m_stamps;
  LogRun m_run;
  std::string m_name;  // of the run; empty before its first line
  std::vector<RecordedRun> m_runs;
  std::size_t m_offset = 0;  // where HUB's lines begin in the log's lines
  fs::path m_file;
  std::size_t m_line = 0;
  bool m_hasFrameLines = false;
  std::string m_unstamped;  // the first line without a stamp, as FILE:LINE
};

/// The first bytes of a file. Throws when it cannot be read.
std::string FirstBytes(const fs::path& file) {
  constexpr std::size_t kEnough = 4096;
  std::error_code ignored;
  if (fs::is_directory(file, ignored)) {
    throw std::runtime_error(file.u8string() + " is a folder; name its flight records or logs");
  }
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    const std::string reason = std::error_code(errno, std::generic_category()).message();
    throw std::runtime_error(file.u8string() + " cannot be opened: " + reason);
  }
  std::string bytes(kEnough, '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(stream.gcount()));
  return bytes;
}

/// Whether a text begins like the first line of a flight record, which may be cut off.
bool BeginsAsRecord(const std::string& bytes) {
  const std::size_t begin = bytes.find_first_not_of(" \t\r\n");
  if (begin == std::string::npos || bytes[begin] != '{') return false;
  const std::size_t end = std::min(bytes.find('\n', begin), bytes.size());
  const std::string line = bytes.substr(begin, end - begin);
  const std::string member = "\"record\"";
  if (line.find(member) != std::string::npos) return true;
  return end == bytes.size() && ("{" + member).compare(0, line.size(), line) == 0;
}

void CheckIsText(const fs::path& file, const std::string& bytes) {
  if (bytes.empty()) throw std::runtime_error(file.u8string() + " is empty");
  const std::string mark = bytes.substr(0, 2);
  if (mark == "\xff\xfe" || mark == "\xfe\xff") {
    throw std::runtime_error(file.u8string() +
                             " is encoded in UTF-16; a log is read as UTF-8, so convert it first");
  }
}

}  // namespace

std::vector<RecordedRun> ReadLogRuns(const std::vector<fs::path>& files,
                                     const LogOptions& options) {
  LogReader reader(options);
  for (const fs::path& file : files) reader.Read(file);
  return reader.Finish();
}

bool IsFlightRecord(const fs::path& file) {
  try {
    return BeginsAsRecord(FirstBytes(file));
  } catch (const std::runtime_error&) {
    return false;
  }
}

std::vector<RecordedRun> ReadRuns(const std::vector<fs::path>& files, const LogOptions& options) {
  std::vector<RecordedRun> runs;
  std::vector<fs::path> logs;
  const auto readLogs = [&] {
    for (const LogFileGroup& group : GroupLogFiles(logs)) {
      std::vector<RecordedRun> some = ReadLogRuns(group, options);
      std::move(some.begin(), some.end(), std::back_inserter(runs));
    }
    logs.clear();
  };
  for (const fs::path& file : files) {
    const std::string bytes = FirstBytes(file);
    CheckIsText(file, bytes);
    if (!BeginsAsRecord(bytes)) {
      logs.push_back(file);
      continue;
    }
    readLogs();
    runs.push_back(ReadRecordedRun(file));
  }
  readLogs();
  return runs;
}
