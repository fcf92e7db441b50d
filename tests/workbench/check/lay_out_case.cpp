// lay_out_case RULE FOLDER: puts the first bad product of a rule into an empty folder, and prints
// the running module that it needs.

#include <algorithm>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/workbench/check/CaseFile.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "lay_out_case RULE FOLDER\n";
    return 2;
  }
  try {
    const std::vector<ProductCase> cases = ReadCases(TEV_CASES);
    const auto one = std::find_if(cases.begin(), cases.end(), [&](const ProductCase& candidate) {
      return candidate.rule == argv[1] && !candidate.isClean;
    });
    if (one == cases.end()) throw std::runtime_error(std::string("no bad case of ") + argv[1]);
    LayOutCase(*one, TEV_GOOD_PRODUCT, TEV_FIXTURES, argv[2]);
    std::cout << one->module << "\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
}
