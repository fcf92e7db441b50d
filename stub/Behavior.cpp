#include "stub/Behavior.h"

#include <array>
#include <cstdint>
#include <sstream>

namespace {

using Ending = EntryBehavior::Ending;

struct EndingWord {
  Ending ending;
  const char* word;
};

constexpr EndingWord kWords[] = {{Ending::kSucceeds, "succeeds"}, {Ending::kFails, "fails"},
                                 {Ending::kThrows, "throws"},     {Ending::kHangs, "hangs"},
                                 {Ending::kAborts, "aborts"},     {Ending::kSegfaults, "segfaults"},
                                 {Ending::kExits, "exits"}};

std::optional<Ending> EndingOf(const std::string& word) {
  for (const EndingWord& known : kWords) {
    if (word == known.word) return known.ending;
  }
  return std::nullopt;
}

std::string EntryText(const EntryBehavior& entry) {
  std::string text = std::to_string(entry.duration.count());
  for (const EndingWord& known : kWords) {
    if (known.ending == entry.ending) text += std::string(" ") + known.word;
  }
  return text;
}

bool ReadEntry(std::istringstream& words, EntryBehavior& entry) {
  std::int64_t microseconds = 0;
  std::string word;
  if (!(words >> microseconds >> word)) return false;
  const std::optional<Ending> ending = EndingOf(word);
  if (!ending) return false;
  entry = {std::chrono::microseconds(microseconds), *ending};
  return true;
}

/// The next line, without its line feed. False at the end of the file.
bool ReadLine(std::FILE& file, std::string& line) {
  line.clear();
  std::array<char, 256> part{};
  while (std::fgets(part.data(), static_cast<int>(part.size()), &file) != nullptr) {
    line += part.data();
    if (line.back() != '\n') continue;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    return true;
  }
  return !line.empty();
}

}  // namespace

std::optional<Behavior> ReadBehavior(std::FILE& file, const std::string& name) {
  Behavior behavior;
  for (std::string line; ReadLine(file, line);) {
    if (line == "busy") behavior.busy = true;
    if (line.compare(0, name.size() + 1, name + " ") != 0) continue;
    std::istringstream words(line.substr(name.size()));
    const bool isWhole = ReadEntry(words, behavior.init) && ReadEntry(words, behavior.uninit);
    return isWhole ? std::optional(behavior) : std::nullopt;
  }
  return std::nullopt;
}

std::string BehaviorLine(const std::string& name, const Behavior& behavior) {
  return name + " " + EntryText(behavior.init) + " " + EntryText(behavior.uninit) + "\n";
}
