// door.driver: the door controller's text protocol: "#door;state;checksum".

#include <string>

#include "sdk/plugin/TevPlugin.h"

namespace {

/// "open", "closed", or empty for a message that is damaged.
std::string StateOf(const std::string& message) {
  const std::size_t first = message.find(';');
  const std::size_t last = message.rfind(';');
  if (message.empty() || message[0] != '#' || first == last) return std::string();
  unsigned sum = 0;
  for (std::size_t i = 1; i < last; ++i) sum = (sum + static_cast<unsigned char>(message[i])) % 100;
  if (std::to_string(sum) != message.substr(last + 1)) return std::string();
  return message.substr(first + 1, last - first - 1);
}

}  // namespace

bool Init() {
  return StateOf("#7;open;48") == "open" && StateOf("#7;open;99").empty();
}

bool UnInit() {
  return true;
}
