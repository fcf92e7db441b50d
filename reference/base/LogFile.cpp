#include "reference/base/LogFile.h"

#include <spdlog/details/file_helper.h>
#include <spdlog/details/os.h>

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <tuple>

#include "reference/base/LogLine.h"

namespace {

namespace os = spdlog::details::os;

std::string Reason(int error) {
  return std::generic_category().message(error);
}

/// Whether the file does not end in a line feed: a process was killed while it wrote a line.
bool EndsMidLine(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  file.seekg(-1, std::ios::end);
  const int last = file.get();
  return last != std::ifstream::traits_type::eof() && last != '\n';
}

}  // namespace

LogFile::LogFile(const LogConfig& config, std::atomic<std::uint64_t>& lost)
    : m_path(config.file),
      m_maxBytes(config.maxFileBytes),
      m_maxFiles(config.maxFiles),
      m_lost(lost),
      m_fullAt(config.maxFileBytes) {
  if (!Open()) throw std::runtime_error(Reason(m_error));
}

void LogFile::sink_it_(const spdlog::details::log_msg& message) {
  try {
    if (Write(message)) return;
  } catch (const std::bad_alloc&) {
    m_error = ENOMEM;
  } catch (const std::exception&) {
    m_error = EIO;  // the file's size cannot be read
  }
  ++m_unreported;
  ++m_lost;
}

/// log.txt is number 0; log.1.txt is the newest of the renamed files.
std::string LogFile::Name(std::size_t number) const {
  if (number == 0) return m_path;
  const auto [stem, extension] = spdlog::details::file_helper::split_by_extension(m_path);
  return stem + "." + std::to_string(number) + extension;
}

bool LogFile::Open() {
  os::create_dir(os::dir_name(m_path));
  std::FILE* file = nullptr;
  if (os::fopen_s(&file, m_path, "ab")) {
    m_error = errno;
    return false;
  }
  m_file.reset(file);
  // No buffer: stdio would keep bytes that could not be written, and write them later.
  std::setvbuf(file, nullptr, _IONBF, 0);
  m_size = os::filesize(file);
  m_isMidLine = m_size > 0 && EndsMidLine(m_path);
  return true;
}

bool LogFile::Write(const spdlog::details::log_msg& message) {
  spdlog::memory_buf_t line;
  formatter_->format(message, line);
  if (!m_file && !Open()) return false;
  if (IsFullFor(line.size()) && !Rename(message)) return false;
  if (m_unreported > 0) {
    const std::string text =
        "log lines lost here: " + std::to_string(m_unreported) + " (" + Reason(m_error) + ")";
    if (!WriteNotice(text, message)) return false;
    m_unreported = 0;
  }
  return Append(line);
}

/// Writes a line about the log itself, with the time of the line that follows it.
bool LogFile::WriteNotice(const std::string& text, const spdlog::details::log_msg& before) {
  const std::string notice = LogLine(4, "base.log", text);
  spdlog::memory_buf_t line;
  formatter_->format({before.time, {}, {}, before.level, notice}, line);
  return Append(line);
}

bool LogFile::Append(const spdlog::memory_buf_t& line) {
  if (m_isMidLine && !Put("\n", 1)) return false;
  m_isMidLine = false;
  return Put(line.data(), line.size());
}

bool LogFile::Put(const char* bytes, std::size_t count) {
  const std::size_t written = std::fwrite(bytes, 1, count, m_file.get());
  if (written == count) {
    m_size += written;
    return true;
  }
  m_error = errno;
  std::clearerr(m_file.get());
  m_size += written;
  m_isMidLine = m_isMidLine || written > 0;
  return false;
}

bool LogFile::IsFullFor(std::size_t bytes) {
  if (m_size + bytes <= m_fullAt) return false;
  // Another process may have truncated the file; a device has no size.
  m_size = os::filesize(m_file.get());
  return m_size > 0 && m_size + bytes > m_fullAt;
}

/// Renames the full file and opens a new one; false when no file is open afterwards. If a rename
/// fails, that is reported in the file before the line `next`, and no file is lost: the oldest is
/// removed only when all have been renamed.
bool LogFile::Rename(const spdlog::details::log_msg& next) {
  m_file.reset();  // Windows renames no open file
  std::size_t number = 1;
  while (number <= m_maxFiles && os::path_exists(Name(number))) ++number;
  if (number > m_maxFiles) os::remove(Name(number));  // left there when a rename failed
  int refusal = 0;
  for (; number > 0 && refusal == 0; --number) {
    if (os::rename(Name(number - 1), Name(number)) != 0) refusal = errno;
  }
  if (refusal == 0) os::remove(Name(m_maxFiles + 1));
  if (!Open()) return false;
  m_fullAt = m_size + m_maxBytes;
  if (refusal == 0) return true;
  const std::string text =
      "the full log could not be renamed, it keeps growing: " + Reason(refusal);
  return WriteNotice(text, next);
}
