#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

/// What one run of HUB left behind.
struct HubResult {
  int status = -1;
  std::string output;
  std::string errors;

  nlohmann::json Json() const { return nlohmann::json::parse(output); }
};

/// Runs HUB with these arguments, which may end in further words for the shell, and waits for it.
HubResult RunHub(const std::string& arguments);

/// A copy of the sample product in a folder of its own, to be broken by a test.
class SiteCopy {
 public:
  SiteCopy();
  ~SiteCopy();
  SiteCopy(const SiteCopy&) = delete;
  SiteCopy& operator=(const SiteCopy&) = delete;

  /// The folder that HUB takes as --bin, quoted for the command line, and as a path.
  std::string Bin() const { return "\"" + (m_root / "bin").string() + "\""; }
  std::filesystem::path Path(const std::string& relative) const { return m_root / relative; }

  void Write(const std::string& relative, const std::string& content) const;
  std::string Read(const std::string& relative) const;
  void Remove(const std::string& relative) const;

 private:
  std::filesystem::path m_root;
};
