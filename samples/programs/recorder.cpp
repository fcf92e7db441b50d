// recorder: reads one number a line, prints count, smallest, largest and mean.

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
  if (count == 0) return 1;
  std::cout << count << ' ' << smallest << ' ' << largest << ' ' << sum / count << '\n';
}
