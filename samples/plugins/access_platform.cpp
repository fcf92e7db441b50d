// access.platform: the sub platform of doors and cards.

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "access.platform";

class Cards : public CardService {
 public:
  bool Valid(const std::string& number) const override {
    if (IsSound(number)) return true;
    IKPXFormatLog(board::kProgress, kPlugin, "refuses \"%s\": no card has this number",
                  number.c_str());
    return false;
  }

 private:
  /// Whether there are digits, and the last one is right for those before it.
  static bool IsSound(const std::string& number) {
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
};

}  // namespace

bool Init() {
  board::Publish<CardService>(std::make_shared<Cards>());
  return true;
}

bool UnInit() {
  board::Withdraw(CardService::kName);
  return true;
}
