// lay_out_case RULE FOLDER: puts the first bad product of a rule into an empty folder, and prints
// the running module that it needs. For a product of Windows, its findings there follow.

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/workbench/check/CaseFile.h"

namespace fs = std::filesystem;

namespace {

void SetPermissions(const ProductCase& one, const fs::path& folder) {
  for (const std::string& file : one.writable) {
    fs::permissions(folder / file, fs::perms::others_write, fs::perm_options::add);
  }
  const fs::perms execute = fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
  for (const std::string& file : one.noProgram) {
    fs::permissions(folder / file, execute, fs::perm_options::remove);
  }
}

}  // namespace

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
    SetPermissions(*one, argv[2]);
    std::cout << one->module << "\n";
    if (one->system == "pe") std::cout << one->findings;
  } catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
}
