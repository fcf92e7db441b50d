// camera.driver: the camera's status frame: magic, version, 16-bit length, temperature in tenths.

#include <cstdint>
#include <vector>

#include "sdk/plugin/TevPlugin.h"

namespace {

/// The temperature in tenths of a degree, or nothing good: -32768.
int Temperature(const std::vector<std::uint8_t>& frame) {
  if (frame.size() != 6 || frame[0] != 0xCA || frame[1] != 1) return -32768;
  const int length = frame[2] << 8 | frame[3];
  if (length != 2) return -32768;
  return static_cast<std::int16_t>(frame[4] << 8 | frame[5]);
}

}  // namespace

bool Init() {
  return Temperature({0xCA, 1, 0, 2, 0xFF, 0xF6}) == -10 && Temperature({0xCA, 2}) == -32768;
}

bool UnInit() {
  return true;
}
