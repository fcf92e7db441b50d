// sensor.driver: the sensor line's frames, byte-stuffed between two end marks.

#include <cstdint>
#include <vector>

#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr std::uint8_t kEnd = 0xC0;
constexpr std::uint8_t kEscape = 0xDB;
constexpr std::uint8_t kEscapedEnd = 0xDC;
constexpr std::uint8_t kEscapedEscape = 0xDD;

/// The payloads of all whole frames in a stream; one with a damaged escape is left out.
std::vector<std::vector<std::uint8_t>> Frames(const std::vector<std::uint8_t>& stream) {
  std::vector<std::vector<std::uint8_t>> frames;
  std::vector<std::uint8_t> frame;
  bool escaped = false;
  bool damaged = false;
  for (const std::uint8_t byte : stream) {
    if (byte == kEnd) {
      if (!frame.empty() && !escaped && !damaged) frames.push_back(frame);
      frame.clear();
      escaped = false;
      damaged = false;
    } else if (escaped) {
      damaged = damaged || (byte != kEscapedEnd && byte != kEscapedEscape);
      frame.push_back(byte == kEscapedEnd ? kEnd : kEscape);
      escaped = false;
    } else if (byte == kEscape) {
      escaped = true;
    } else {
      frame.push_back(byte);
    }
  }
  return frames;
}

}  // namespace

bool Init() {
  const auto frames =
      Frames({kEnd, 1, kEscape, kEscapedEnd, kEnd, 2, kEscape, 7, kEnd, 3, kEnd, 4});
  return frames == std::vector<std::vector<std::uint8_t>>{{1, kEnd}, {3}};
}

bool UnInit() {
  return true;
}
