#pragma once

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A folder of a test's own, gone with it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    static std::atomic<int> count{0};
    m_path = std::filesystem::temp_directory_path() /
             ("reference_tests." + std::to_string(getpid()) + "." + std::to_string(++count));
    std::filesystem::create_directory(m_path);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  /// The path of the file `name` in the folder, whether or not there is one.
  std::string operator/(const std::string& name) const { return (m_path / name).string(); }

  /// Writes `content` to the file `name` and returns its path.
  std::string Write(const std::string& name, const std::string& content) const {
    std::ofstream(m_path / name, std::ios::binary) << content;
    return *this / name;
  }

  std::string Read(const std::string& name) const {
    std::ifstream file(m_path / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

 private:
  std::filesystem::path m_path;
};
