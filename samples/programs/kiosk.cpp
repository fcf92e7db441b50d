// kiosk, brought by an addon: what a stay of so many minutes costs, in cents.

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iostream>
#include <system_error>

namespace {

/// Minutes, or -1 for a text that is no whole number of them.
int Minutes(const char* text) {
  const char* end = text + std::strlen(text);
  int minutes = 0;
  const auto parsed = std::from_chars(text, end, minutes);
  return parsed.ec == std::errc() && parsed.ptr == end ? minutes : -1;
}

}  // namespace

int main(int argc, char** argv) {
  const int minutes = argc == 2 ? Minutes(argv[1]) : -1;
  if (minutes < 0) {
    std::cerr << "usage: kiosk MINUTES\n";
    return 2;
  }
  const int hours = minutes / 60 + (minutes % 60 == 0 ? 0 : 1);
  std::cout << std::min(hours, 8) * 250 << '\n';
}
