#include "tests/system/HubProcess.h"

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

namespace fs = std::filesystem;

namespace {

fs::path NewFolder() {
  std::random_device random;
  std::ostringstream name;
  name << "tevhub-" << std::hex << random() << random();
  const fs::path folder = fs::temp_directory_path() / name.str();
  fs::create_directories(folder);
  return folder;
}

std::string Content(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

}  // namespace

HubResult RunHub(const std::string& arguments) {
  const fs::path folder = NewFolder();
  const std::string command = std::string("{ \"") + TEV_HUB + "\" " + arguments + "; } >\"" +
                              (folder / "out").string() + "\" 2>\"" + (folder / "err").string() +
                              "\"";
  const int status = std::system(command.c_str());
  HubResult result;
  result.status = status > 255 ? status / 256 : status;  // a shell's status, or a signal's number
  result.output = Content(folder / "out");
  result.errors = Content(folder / "err");
  fs::remove_all(folder);
  return result;
}

SiteCopy::SiteCopy() : m_root(NewFolder()) {
  fs::copy(TEV_SITE, m_root, fs::copy_options::recursive);
}

SiteCopy::~SiteCopy() {
  std::error_code ignored;
  fs::remove_all(m_root, ignored);
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
