#include "workbench/product/ModelText.h"

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <limits>
#include <system_error>

namespace fs = std::filesystem;

namespace {

struct Fault {
  bool missing = false;
  bool isPipe = false;
};

/// Reads `file` into `text`. Returns why it cannot be read; empty on success.
std::string Read(std::string& text, const fs::path& file, Fault& fault) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  fault.missing = status.type() == fs::file_type::not_found;
  fault.isPipe = fs::is_fifo(status);
  if (fault.missing) return "does not exist";
  if (status.type() == fs::file_type::none) return "cannot be looked at: " + error.message();
  if (fs::is_directory(status)) return "is a directory";
  if (fault.isPipe) return "is a pipe";
  if (!fs::is_regular_file(status)) return "is no regular file";
  const std::uintmax_t size = fs::file_size(file, error);
  if (error) return "cannot be looked at: " + error.message();
  if (size == 0) return "is empty";
  if (size > std::numeric_limits<std::int32_t>::max()) return "is larger than 2 GB";

  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return "cannot be read: " + std::generic_category().message(errno);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(stream.gcount()));
  if (bytes.empty()) return "cannot be read";
  const std::size_t last = bytes.find_last_not_of('\n');
  if (last != std::string::npos) bytes.resize(last + 1);
  text = std::move(bytes);
  return std::string();
}

}  // namespace

ModelText ReadModelText(const std::string& local, fs::path (*toPath)(const std::string& local)) {
  ModelText result;
  const fs::path file = toPath(local);
  Fault fault;
  result.problem = Read(result.text, file, fault);
  result.missing = fault.missing;
  result.isPipe = fault.isPipe;
  if (result.problem.empty()) {
    result.read = file;
    return result;
  }
  const std::size_t nameAt = local.find_last_of("/\\") + 1;
  const std::string name = local.substr(nameAt);
  result.standIn = name.substr(0, name.rfind('.')) + ".data";
  const fs::path standIn = toPath(local.substr(0, nameAt) + result.standIn);
  result.standInProblem = Read(result.text, standIn, fault);
  result.isPipe = result.isPipe || fault.isPipe;
  if (result.standInProblem.empty()) result.read = standIn;
  return result;
}
