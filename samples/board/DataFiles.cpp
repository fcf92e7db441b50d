#include "samples/board/DataFiles.h"

#include <fstream>
#include <sstream>

#include "samples/board/Board.h"
#include "sdk/base/path.h"

namespace {

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string::npos) return std::string();
  return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

}  // namespace

std::optional<std::string> board::ReadData(const std::string& name, const char* plugin) {
  // The frame takes the plugins from there too: what HUB has as --bin.
  const std::string path = GetCurExeDir() + "data/" + name;
  std::ostringstream content;
  if (!(content << std::ifstream(path).rdbuf())) {
    IKPXFormatLog(kFailure, plugin, "%s cannot be read, or is empty", path.c_str());
    return std::nullopt;
  }
  return content.str();
}

std::map<std::string, std::string> board::ParseSettings(const std::string& text) {
  std::map<std::string, std::string> values;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    line = line.substr(0, line.find('#'));
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    values[Trimmed(line.substr(0, equals))] = Trimmed(line.substr(equals + 1));
  }
  return values;
}
