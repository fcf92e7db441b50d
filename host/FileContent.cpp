#include "host/FileContent.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>

#include "host/Commands.h"
#include "reference/os/LocalText.h"

namespace fs = std::filesystem;

namespace {

constexpr std::streamsize kPieceBytes = 65536;

using Piece = std::array<char, kPieceBytes>;

}  // namespace

bool HaveDifferentContent(const fs::path& a, const fs::path& b) {
  std::error_code error;
  if (!fs::is_regular_file(a, error) || !fs::is_regular_file(b, error)) return false;
  if (fs::equivalent(a, b, error)) return false;
  std::ifstream fileA(a, std::ios::binary);
  std::ifstream fileB(b, std::ios::binary);
  if (!fileA || !fileB) return false;
  const std::uintmax_t sizeA = fs::file_size(a, error);
  if (!error && sizeA != fs::file_size(b, error) && !error) return true;
  const auto pieceA = std::make_unique<Piece>();
  const auto pieceB = std::make_unique<Piece>();
  while (fileA && fileB) {
    fileA.read(pieceA->data(), kPieceBytes);
    fileB.read(pieceB->data(), kPieceBytes);
    if (fileA.bad() || fileB.bad()) return false;
    const auto count = static_cast<std::size_t>(fileA.gcount());
    if (fileA.gcount() != fileB.gcount()) return true;
    if (std::memcmp(pieceA->data(), pieceB->data(), count) != 0) return true;
  }
  return false;
}

std::string ReadFileText(const char* option, const std::string& file) {
  std::ifstream stream(PathFromLocal(file), std::ios::binary);
  if (!stream) throw UsageError(std::string(option) + ": " + file + " cannot be read");
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void WriteFileText(const char* option, const std::string& file, const std::string& text) {
  std::ofstream stream(PathFromLocal(file), std::ios::binary);
  stream << text;
  stream.close();
  if (!stream) throw UsageError(std::string(option) + ": " + file + " cannot be written");
}

void WriteOutput(HostContext& context, const std::string& text) {
  context.output.Write(text);
  context.output.Flush();
  if (context.output.Error().empty()) return;
  throw UsageError("standard output cannot be written: " + context.output.Error());
}
