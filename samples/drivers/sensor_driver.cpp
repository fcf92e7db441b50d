// sensor.driver: the sensor line's frames, byte-stuffed between two end marks.

#include <cstdint>
#include <vector>

#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr std::uint8_t kEnd = 0xC0;
constexpr std::uint8_t kEscape = 0xDB;

/// The payloads of all whole frames in a stream.
std::vector<std::vector<std::uint8_t>> Frames(const std::vector<std::uint8_t>& stream) {
  std::vector<std::vector<std::uint8_t>> frames;
  std::vector<std::uint8_t> frame;
  bool escaped = false;
  for (const std::uint8_t byte : stream) {
    if (byte == kEnd) {
      if (!frame.empty()) frames.push_back(frame);
      frame.clear();
    } else if (byte == kEscape) {
      escaped = true;
    } else {
      frame.push_back(escaped ? static_cast<std::uint8_t>(byte == 0xDC ? kEnd : kEscape) : byte);
      escaped = false;
    }
  }
  return frames;
}

}  // namespace

bool Init() {
  const auto frames = Frames({0xC0, 1, 0xDB, 0xDC, 0xC0, 2, 0xC0, 3});
  return frames.size() == 2 && frames[0] == std::vector<std::uint8_t>{1, 0xC0};
}

bool UnInit() {
  return true;
}
