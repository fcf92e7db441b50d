// recorder: reads numbers, prints count, smallest, largest and mean.

#include <algorithm>
#include <iostream>
#include <limits>

int main() {
  double smallest = std::numeric_limits<double>::infinity();
  double largest = -smallest;
  double sum = 0;
  int count = 0;
  for (double value = 0; std::cin >> value; ++count) {
    smallest = std::min(smallest, value);
    largest = std::max(largest, value);
    sum += value;
  }
  if (!std::cin.eof()) {
    std::cerr << "recorder: no number behind the first " << count << '\n';
    return 1;
  }
  if (count == 0) {
    std::cerr << "recorder: no numbers\n";
    return 1;
  }
  std::cout << count << ' ' << smallest << ' ' << largest << ' ' << sum / count << '\n';
}
