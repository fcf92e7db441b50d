#include "workbench/record/HeadLine.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr char kNameless[] = "(without a name)";

/// The argument in double quotes when it contains blanks or quotes or is empty.
std::string Quoted(const std::string& argument) {
  const bool plain = !argument.empty() && argument.find_first_of(" \t\"'") == std::string::npos;
  return plain ? argument : "\"" + argument + "\"";
}

/// The arguments that Quoted has written, separated by blanks. A quote inside of an argument is not
/// told from the one at its end where a blank follows it.
std::vector<std::string> ArgumentsIn(std::string_view text) {
  std::vector<std::string> arguments;
  while (!text.empty()) {
    const bool isQuoted = text.front() == '"';
    const std::size_t end = std::min(text.find(isQuoted ? "\" " : " "), text.size());
    std::string_view argument = text.substr(0, end);
    if (isQuoted) argument.remove_prefix(1);
    if (isQuoted && end == text.size() && !argument.empty()) argument.remove_suffix(1);
    arguments.emplace_back(argument);
    text.remove_prefix(std::min(end + (isQuoted ? 2 : 1), text.size()));
  }
  return arguments;
}

/// Removes `label` from the start of `rest`, and the text after it up to `end` and `end` itself.
/// Returns that text; none when either is missing.
std::optional<std::string_view> Take(std::string_view& rest, std::string_view label,
                                     std::string_view end) {
  if (rest.substr(0, label.size()) != label) return std::nullopt;
  const std::size_t place = rest.find(end, label.size());
  if (place == std::string_view::npos) return std::nullopt;
  const std::string_view text = rest.substr(label.size(), place - label.size());
  rest.remove_prefix(place + end.size());
  return text;
}

/// The line separates a product's name and version only by a blank.
void SetProduct(RunHead& head, std::string_view text) {
  const std::size_t blank = text.rfind(' ');
  const bool hasVersion = blank != std::string_view::npos && blank + 1 < text.size() &&
                          text[blank + 1] >= '0' && text[blank + 1] <= '9';
  if (hasVersion) head.productVersion = text.substr(blank + 1);
  const std::string_view name = hasVersion ? text.substr(0, blank) : text;
  if (name != kNameless) head.product = name;
}

}  // namespace

std::string HeadLine(const RunHead& head) {
  std::string line = "HUB " + head.hubVersion + ", frame " + head.frameVersion + ", platform " +
                     head.platformVersion + ", pid " + std::to_string(head.pid) + " on " +
                     head.host + ", product ";
  line += head.product.empty() ? kNameless : head.product;
  if (!head.productVersion.empty()) line += " " + head.productVersion;
  std::string command;
  for (const std::string& argument : head.commandLine) {
    command += (command.empty() ? "" : " ") + Quoted(argument);
  }
  return line + " in " + head.path + ": " + command;
}

std::optional<RunHead> ReadHeadLine(std::string_view line) {
  std::string_view rest = line;
  const auto hub = Take(rest, "HUB ", ", frame ");
  const auto frame = hub ? Take(rest, "", ", platform ") : std::nullopt;
  const auto platform = frame ? Take(rest, "", ", pid ") : std::nullopt;
  const auto pid = platform ? Take(rest, "", " on ") : std::nullopt;
  const auto host = pid ? Take(rest, "", ", product ") : std::nullopt;
  const auto product = host ? Take(rest, "", " in ") : std::nullopt;
  const auto path = product ? Take(rest, "", ": ") : std::nullopt;
  if (!path) return std::nullopt;
  RunHead head;
  const auto number = std::from_chars(pid->data(), pid->data() + pid->size(), head.pid);
  if (number.ec != std::errc() || number.ptr != pid->data() + pid->size()) return std::nullopt;
  head.hubVersion = *hub;
  head.frameVersion = *frame;
  head.platformVersion = *platform;
  head.host = *host;
  head.path = *path;
  SetProduct(head, *product);
  head.commandLine = ArgumentsIn(rest);
  return head;
}
