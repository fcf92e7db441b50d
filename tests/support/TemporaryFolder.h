#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

/// A new, empty folder, which is removed with the object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    m_path = std::filesystem::temp_directory_path() /
             ("tev." + std::to_string(random()) + "." + std::to_string(random()));
    std::filesystem::create_directories(m_path);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return m_path; }

  /// The path of the file `name` in the folder; the file need not exist.
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
