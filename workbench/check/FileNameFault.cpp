#include "workbench/check/FileNameFault.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "workbench/check/Words.h"
#include "workbench/output/LetterCase.h"

namespace {

/// "a blank"; null when `c` is visible.
const char* BlankName(char c) {
  if (c == ' ') return "a blank";
  if (c == '\t') return "a tab";
  return c == '\n' || c == '\r' ? "a line break" : nullptr;
}

/// Windows opens a device for such a name, whatever follows its first ".".
bool IsDevice(const std::string& name) {
  static constexpr std::array<std::string_view, 4> kDevices = {"aux", "con", "nul", "prn"};
  const std::string lowered = Lowered(name);
  if (std::find(kDevices.begin(), kDevices.end(), lowered) != kDevices.end()) return true;
  const std::string port = lowered.substr(0, 3);
  return lowered.size() == 4 && (port == "com" || port == "lpt") && lowered[3] >= '1' &&
         lowered[3] <= '9';
}

std::string CharacterFault(const std::string& id) {
  for (const char c : id) {
    const std::string shown = "contains " + Quoted(std::string(1, c));
    if (c == '/' || c == '\\') return shown + ", which separates folders";
    if (std::strchr("<>:\"|?*", c) != nullptr) return shown + ", which Windows refuses in names";
    if (static_cast<unsigned char>(c) < ' ') return "contains a control character";
    if (static_cast<unsigned char>(c) >= 0x80) {
      return "contains a character beyond ASCII, whose bytes Windows takes for other characters "
             "unless its code page is UTF-8";
    }
  }
  return std::string();
}

}  // namespace

std::string FileNameFault(const std::string& id) {
  if (id.empty()) return std::string();
  if (id == "." || id == "..") return "is the name that systems give to a folder itself";
  if (BlankName(id.front()) != nullptr) return std::string("begins with ") + BlankName(id.front());
  if (BlankName(id.back()) != nullptr) return std::string("ends in ") + BlankName(id.back());
  std::string character = CharacterFault(id);
  if (!character.empty()) return character;
  if (id.back() == '.') return "ends in \".\", which Windows removes from names of folders";
  const std::string first = id.substr(0, id.find('.'));
  return IsDevice(first) ? "begins with " + Quoted(first) + ", a device on Windows" : std::string();
}
