#include "tests/system/ExportTable.h"

#include <gtest/gtest.h>

#include <boost/process/child.hpp>
#include <boost/process/cmd.hpp>
#include <boost/process/io.hpp>

namespace bp = boost::process;

namespace {

std::set<std::string> Symbols(const std::string& kind, const std::string& library) {
  bp::ipstream table;
  bp::child nm("nm -D " + kind + " -P \"" + library + "\"", bp::std_out > table);
  std::set<std::string> names;
  for (std::string line; std::getline(table, line);) names.insert(line.substr(0, line.find(' ')));
  nm.wait();
  EXPECT_EQ(0, nm.exit_code());
  return names;
}

}  // namespace

std::set<std::string> ExportedNames(const std::string& library) {
  return Symbols("--defined-only", library);
}

std::set<std::string> ImportedNames(const std::string& library) {
  return Symbols("--undefined-only", library);
}
