// gate.driver, brought by an addon: the car park's gate tells of a passing car by two light beams.

#include <string>

#include "sdk/plugin/TevPlugin.h"

namespace {

/// +1 for a car in, -1 for a car out, 0 for one that turned back; beams as "A", "AB", "B" in order.
int Passed(const std::string& first, const std::string& second, const std::string& third) {
  if (second != "AB" || first == third) return 0;
  return first == "A" ? 1 : -1;
}

}  // namespace

bool Init() {
  return Passed("A", "AB", "B") == 1 && Passed("B", "AB", "A") == -1 && Passed("A", "AB", "A") == 0;
}

bool UnInit() {
  return true;
}
