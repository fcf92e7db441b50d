// access.platform: the sub platform of doors and cards: checks card numbers.

#include <string>

#include "sdk/plugin/TevPlugin.h"

namespace {

/// The check digit by which a card number's misreadings are found.
bool ValidCard(const std::string& number) {
  int sum = 0;
  bool twice = false;
  for (auto digit = number.rbegin(); digit != number.rend(); ++digit, twice = !twice) {
    if (*digit < '0' || *digit > '9') return false;
    int value = *digit - '0';
    if (twice) value = value * 2 - (value > 4 ? 9 : 0);
    sum += value;
  }
  return !number.empty() && sum % 10 == 0;
}

}  // namespace

bool Init() {
  return ValidCard("79927398713") && !ValidCard("79927398710") && !ValidCard("7992x");
}

bool UnInit() {
  return true;
}
