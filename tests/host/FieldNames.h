#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

// The names of records and fields, as the project's headers declare them.

/// The lines of `file`, a path in the project's folder, without comments.
inline std::vector<std::string> CodeLines(const std::string& file) {
  std::ifstream stream(std::string(TEV_SOURCE_DIR "/") + file, std::ios::binary);
  EXPECT_TRUE(stream) << file;
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    line.erase(std::min(line.find("//"), line.size()));
    line.erase(line.find_last_not_of(' ') + 1);
    lines.push_back(line);
  }
  return lines;
}

/// The structs that `header` declares.
inline std::vector<std::string> RecordNames(const std::string& header) {
  static const std::regex declaration(R"(struct (\w+)\b.* \{)");
  std::vector<std::string> names;
  std::smatch found;
  for (const std::string& line : CodeLines(header)) {
    if (std::regex_match(line, found, declaration)) names.push_back(found[1]);
  }
  return names;
}

/// The fields of the struct or class `record` of `header`, those of its bases first. Each field is
/// declared on a line of its own.
inline std::vector<std::string> FieldNames(const std::string& header, const std::string& record) {
  static const std::regex field(R"( +[\w:<>, ]+ (\w+)( = [^;]+)?;)");
  static const std::regex base(R"([:,] (\w+))");
  const std::regex begin("( *)(struct|class) " + record + R"(( : .*)? \{)");
  const std::vector<std::string> lines = CodeLines(header);
  std::vector<std::string> names;
  std::smatch found;
  auto line = std::find_if(lines.begin(), lines.end(),
                           [&](const auto& text) { return std::regex_match(text, found, begin); });
  if (line == lines.end()) {
    ADD_FAILURE() << header << " has no " << record;
    return names;
  }
  const std::string end = found[1].str() + "};";
  const std::string bases = found[3];
  for (std::sregex_iterator it(bases.begin(), bases.end(), base), last; it != last; ++it) {
    for (const std::string& name : FieldNames(header, (*it)[1])) names.push_back(name);
  }
  while (++line != lines.end() && *line != end) {
    const bool isStatic = line->find(" static ") != std::string::npos;
    if (!isStatic && std::regex_match(*line, found, field)) names.push_back(found[1]);
  }
  return names;
}

/// What is in only one of them: "-Name " for what is missing in `shown`, "+Name " for what only
/// that has. Empty when both have the same names.
template <typename Names, typename Shown>
std::string Difference(const Names& names, const Shown& shown) {
  const auto has = [](const auto& all, const std::string& name) {
    return std::find(all.begin(), all.end(), name) != all.end();
  };
  std::string text;
  for (const std::string& name : names) {
    if (!has(shown, name)) text += "-" + name + " ";
  }
  for (const std::string& name : shown) {
    if (!has(names, name)) text += "+" + name + " ";
  }
  return text;
}
