#include "tests/system/ExportTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/process/child.hpp>
#include <boost/process/cmd.hpp>
#include <boost/process/io.hpp>
#include <sstream>
#include <vector>

namespace bp = boost::process;

namespace {

struct DynamicSymbol {
  std::string name;
  std::string type;
  std::string section;
  ExportedSymbol symbol;
};

std::vector<DynamicSymbol> DynamicSymbols(const std::string& library) {
  bp::ipstream table;
  bp::child readelf("readelf -W --dyn-syms \"" + library + "\"", bp::std_out > table);
  std::vector<DynamicSymbol> symbols;
  for (std::string line; std::getline(table, line);) {
    std::istringstream columns(line);
    std::string number, size, bind, visibility;
    DynamicSymbol one;
    columns >> number >> std::hex >> one.symbol.address >> size >> one.type >> bind >> visibility >>
        one.section >> one.name;
    if (!columns) continue;
    one.symbol.function = one.type == "FUNC";
    one.symbol.size = std::stoul(size, nullptr, 0);
    one.name.resize(std::min(one.name.size(), one.name.find('@')));
    symbols.push_back(one);
  }
  readelf.wait();
  EXPECT_EQ(0, readelf.exit_code());
  return symbols;
}

}  // namespace

std::map<std::string, ExportedSymbol> ExportedSymbols(const std::string& library) {
  std::map<std::string, ExportedSymbol> symbols;
  for (const DynamicSymbol& one : DynamicSymbols(library)) {
    if (one.section != "UND") symbols.emplace(one.name, one.symbol);
  }
  return symbols;
}

std::set<std::string> ImportedNames(const std::string& library) {
  std::set<std::string> names;
  for (const DynamicSymbol& one : DynamicSymbols(library)) {
    if (one.section == "UND") names.insert(one.name);
  }
  return names;
}

const void* FunctionBehind(const void* address) {
  return address;
}
