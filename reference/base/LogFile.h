#pragma once

#include <spdlog/sinks/base_sink.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

#include "reference/base/Log.h"

/// The log's file: appends each line with one write, and renames a full file (see LogConfig).
///
/// Created by ConfigureLog and owned by the log's current configuration. Thread-safe: the base
/// class serialises the calls. A line that cannot be written is counted as lost; only the
/// constructor throws. When a full file cannot be renamed, lines are still appended to it; the next
/// attempt follows after another maxFileBytes.
class LogFile final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  /// Opens the file of `config`; creates its folder if it is missing. Throws std::runtime_error
  /// with the system's reason. Counts lost lines in `lost`, which must outlive the object.
  LogFile(const LogConfig& config, std::atomic<std::uint64_t>& lost);

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override;
  void flush_() override {}  // nothing is buffered

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::string Name(std::size_t number) const;
  bool Open();
  bool Write(const spdlog::details::log_msg& message);
  bool WriteNotice(const std::string& text, const spdlog::details::log_msg& before);
  bool Append(const spdlog::memory_buf_t& line);
  bool Put(const char* bytes, std::size_t count);
  bool IsFullFor(std::size_t bytes);
  bool Rename(const spdlog::details::log_msg& next);

  const std::string m_path;
  const std::size_t m_maxBytes;
  const std::size_t m_maxFiles;
  std::atomic<std::uint64_t>& m_lost;

  // Guarded by the base class's mutex.
  std::unique_ptr<std::FILE, Close> m_file;  // null while it cannot be opened
  std::size_t m_size = 0;
  std::size_t m_fullAt;
  bool m_isMidLine = false;        // the last line was only partly written
  std::uint64_t m_unreported = 0;  // lost lines that have not been reported in the file yet
  int m_error = 0;                 // why the last of them was lost (errno)
};
