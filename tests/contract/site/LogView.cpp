#include "tests/contract/libraries/LogView.h"

LogView::LogView() = default;
LogView::~LogView() = default;

std::optional<std::vector<std::string>> LogView::Lines() {
  return std::nullopt;
}
