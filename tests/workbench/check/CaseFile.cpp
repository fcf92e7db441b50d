#include "tests/workbench/check/CaseFile.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "tests/workbench/product/ComposedLibrary.h"

namespace fs = std::filesystem;

namespace {

constexpr char kBad[] = "## bad: ";
constexpr char kClean[] = "## clean: ";
constexpr char kSystem[] = "system ";
constexpr char kWritable[] = "writable ";
constexpr char kNoProgram[] = "no_program ";

bool StartsWith(const std::string& text, const std::string& begin) {
  return text.compare(0, begin.size(), begin) == 0;
}

std::vector<std::string> ReadLines(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string ReadAll(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("there is no " + file.string());
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void WriteAll(const fs::path& file, const std::string& text) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
}

/// `text` with the byte E4 for "\\E4".
std::string WithBytes(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes += text[i];
    } else {
      bytes += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    }
  }
  return bytes;
}

void AddCases(const fs::path& file, std::vector<ProductCase>& cases) {
  bool inFindings = false;
  for (const std::string& line : ReadLines(file)) {
    const bool isClean = StartsWith(line, kClean);
    if (isClean || StartsWith(line, kBad)) {
      ProductCase one;
      one.rule = file.stem().string();
      one.title = line.substr(isClean ? sizeof(kClean) - 1 : sizeof(kBad) - 1);
      one.isClean = isClean;
      cases.push_back(std::move(one));
      inFindings = false;
    } else if (line == "=>") {
      inFindings = true;
    } else if (line.empty()) {
      continue;
    } else if (cases.empty() || cases.back().rule != file.stem()) {
      throw std::runtime_error(file.string() + ": a line before the first case: " + line);
    } else if (inFindings) {
      cases.back().findings += line + "\n";
    } else if (line == "any_names") {
      cases.back().needsAnyNames = true;
    } else if (StartsWith(line, "module ")) {
      cases.back().module = std::stoi(line.substr(7));
    } else if (StartsWith(line, kSystem)) {
      cases.back().system = line.substr(sizeof(kSystem) - 1);
    } else if (StartsWith(line, kWritable)) {
      cases.back().writable.insert(line.substr(sizeof(kWritable) - 1));
    } else if (StartsWith(line, kNoProgram)) {
      cases.back().noProgram.insert(line.substr(sizeof(kNoProgram) - 1));
    } else {
      cases.back().changes.push_back(line);
    }
  }
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::istringstream stream(text);
  std::vector<std::string> parts;
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

/// The library that a line "compose PATH PART..." describes.
std::string Compose(const std::string& system, const std::string& line) {
  LibraryParts parts;
  std::uint64_t machine = 0;
  const std::vector<std::string> words = Split(line, ' ');
  for (std::size_t i = 2; i < words.size(); ++i) {
    const std::size_t equals = words[i].find('=');
    const std::string key = words[i].substr(0, equals);
    const std::string value = words[i].substr(equals + 1);
    if (key == "exports") parts.exported = Split(value, ',');
    if (key == "data") parts.data = Split(value, ',');
    if (key == "needs") parts.needed = Split(value, ',');
    if (key == "uses") parts.used = Split(value, ',');
    if (key == "rpath") parts.rpath = value;
    if (key == "runpath") parts.runpath = value;
    if (key == "version") parts.version = value;
    if (key == "requires") {
      const std::vector<std::string> both = Split(value, ':');
      parts.required.emplace_back(both.at(0), both.at(1));
    }
    if (key == "machine") machine = std::stoul(value);
  }
  const bool isPe = system == "pe";
  std::string bytes = isPe ? PeLibrary(parts) : ElfLibrary(parts);
  if (machine != 0) {
    const std::size_t at = isPe ? 128 + 4 : 18;
    bytes[at] = static_cast<char>(machine & 0xFFU);
    bytes[at + 1] = static_cast<char>(machine >> 8U & 0xFFU);
  }
  return bytes;
}

/// Makes the changes of a case, line by line.
class CaseChanges {
 public:
  CaseChanges(const ProductCase& one, const fs::path& fixtures, const fs::path& to)
      : m_case(one), m_fixtures(fixtures), m_to(to) {}

  void Make() {
    while (m_at < m_case.changes.size()) Make(m_case.changes[m_at++]);
  }

 private:
  void Make(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    std::string path;
    std::string other;
    words >> verb >> path >> other;
    const fs::path file = m_to / path;
    if (verb == "write") return WriteAll(file, TakeLines("| "));
    if (verb == "bytes") return WriteAll(file, WithBytes(TakeLines("| ")));
    if (verb == "change") return Change(file);
    if (verb == "repeat") return Repeat(file, std::stoi(other));
    if (verb == "folder" && fs::create_directories(file)) return;
    if (verb == "remove" && fs::remove_all(file) != 0) return;
    if (verb == "rename") return fs::rename(file, m_to / other);
    if (verb == "link") return fs::create_hard_link(m_to / other, file);
    if (verb == "cut") return fs::resize_file(file, std::stoul(other));
    if (verb == "compose") return WriteAll(file, Compose(m_case.system, line));
    if (verb == "library") {
      fs::copy_file(m_fixtures / (other + ".dll"), file, fs::copy_options::overwrite_existing);
      return;
    }
    if (verb == "plugins") return AddPlugins(std::stoi(path));
    Fail(line);
  }

  /// Adds plugins "load.0", "load.1"... with their descriptions and libraries to the product.
  void AddPlugins(int count) {
    const fs::path bin = m_to / "bin";
    std::string entries;
    for (int i = 0; i < count; ++i) {
      const std::string id = "load." + std::to_string(i);
      entries += "    <Plugin ID=\"" + id + "\" Version=\"1.0\"/>\n";
      WriteAll(bin / "META_INFO" / id / (id + ".xml"),
               "<Plugin>\n  <Type>2</Type>\n  <ID>" + id +
                   "</ID>\n  <Version>1.0</Version>\n</Plugin>\n");
      fs::copy_file(m_fixtures / "well_behaved.dll", bin / (id + ".dll"));
    }
    std::string text = ReadAll(m_to / "Product.xml");
    WriteAll(m_to / "Product.xml", text.insert(text.find("  </Plugins>"), entries));
  }

  void Repeat(const fs::path& file, int count) {
    const std::string lines = TakeLines("| ");
    std::string added;
    for (int i = 1; i <= count; ++i) {
      std::string one = lines;
      for (std::size_t at = one.find('%'); at != std::string::npos; at = one.find('%', at)) {
        one.replace(at, 1, std::to_string(i));
      }
      added += one;
    }
    std::string text = ReadAll(file);
    const std::size_t lastLine = text.rfind('\n', text.size() - 2) + 1;
    WriteAll(file, text.insert(lastLine, added));
  }

  void Change(const fs::path& file) {
    do {
      const std::string before = TakeLines("- ");
      const std::string after = TakeLines("+ ");
      std::string text = ReadAll(file);
      const std::size_t found = text.find(before);
      if (before.empty() || found == std::string::npos) Fail("not found: " + before);
      if (text.find(before, found + 1) != std::string::npos) Fail("found twice: " + before);
      WriteAll(file, text.replace(found, before.size(), after));
    } while (m_at < m_case.changes.size() && StartsWith(m_case.changes[m_at], "- "));
  }

  /// The following lines that begin with `mark`, without it.
  std::string TakeLines(const std::string& mark) {
    std::string text;
    for (; m_at < m_case.changes.size() && StartsWith(m_case.changes[m_at] + " ", mark); ++m_at) {
      const std::string& line = m_case.changes[m_at];
      text += (line.size() < mark.size() ? std::string() : line.substr(mark.size())) + "\n";
    }
    return text;
  }

  [[noreturn]] void Fail(const std::string& why) const {
    throw std::runtime_error(m_case.rule + ", " + m_case.title + ": " + why);
  }

  const ProductCase& m_case;
  const fs::path& m_fixtures;
  const fs::path& m_to;
  std::size_t m_at = 0;
};

}  // namespace

std::vector<ProductCase> ReadCases(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::vector<ProductCase> cases;
  for (const fs::path& file : files) AddCases(file, cases);
  return cases;
}

void LayOutCase(const ProductCase& one, const fs::path& from, const fs::path& fixtures,
                const fs::path& to) {
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
  for (const std::string library : {"alarm.server", "camera.driver", "parking.server",
                                    "report.server", "storage.server", "video.platform"}) {
    const fs::path file = to / "bin" / (library + ".dll");
    if (one.system.empty()) {
      fs::copy_file(fixtures / "well_behaved.dll", file);
    } else {
      WriteAll(file, Compose(one.system, std::string()));
    }
  }
  const fs::path program = to / "bin" / "media.recorder.exe";
  if (one.system.empty()) {
    fs::copy_file(TEV_PROGRAM, program);
  } else {
    WriteAll(program, Compose(one.system, std::string()));
  }
  CaseChanges(one, fixtures, to).Make();
}
