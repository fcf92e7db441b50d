// kiosk, brought by an addon: what a stay of so many minutes costs, in cents.

#include <algorithm>
#include <cstdlib>
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: kiosk MINUTES\n";
    return 2;
  }
  const int hours = (std::max(0, std::atoi(argv[1])) + 59) / 60;
  std::cout << std::min(hours * 250, 2000) << '\n';
}
