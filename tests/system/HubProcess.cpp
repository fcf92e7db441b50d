#include "tests/system/HubProcess.h"

#include <boost/process/cmd.hpp>
#include <boost/process/io.hpp>
#include <fstream>
#include <sstream>

#include "reference/os/LocalText.h"
#include "tests/system/StopProcess.h"

namespace fs = std::filesystem;
namespace bp = boost::process;

namespace {

std::string Content(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  std::string text = content.str();
  // As every reader of text on Windows takes it.
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

}  // namespace

HubProcess::HubProcess(const std::string& arguments, const std::string& program)
    : m_process("\"" + program + "\" " + arguments,
                bp::std_in<bp::null, bp::std_out> m_folder / "out",
                bp::std_err > m_folder / "err") {}

void HubProcess::AskToStop(StopWish wish) {
  StopProcess(m_process, wish);
}

HubResult HubProcess::Wait() {
  m_process.wait();
  return {m_process.exit_code(), Content(m_folder / "out"), Content(m_folder / "err")};
}

HubResult RunHub(const std::string& arguments) {
  return HubProcess(arguments).Wait();
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
