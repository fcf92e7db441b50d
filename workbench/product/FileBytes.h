#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

/// Reads numbers and texts at given offsets of a file that may be damaged. Not thread-safe.
class FileBytes {
 public:
  /// Thrown when the requested bytes are not inside the file.
  struct Broken {};

  explicit FileBytes(const std::filesystem::path& file);

  bool IsOpen() const { return m_file.is_open(); }

  /// `size` bytes at `offset`.
  std::string Bytes(std::uint64_t offset, std::size_t size);

  /// The number in the `size` bytes, at most 8, at `offset`.
  std::uint64_t Number(std::uint64_t offset, std::size_t size);

  /// The bytes from `offset` to a zero byte. Throws Broken when kLongestText bytes contain none.
  std::string Text(std::uint64_t offset);

  void UseBigEndian(bool bigEndian) { m_bigEndian = bigEndian; }

 private:
  static constexpr std::size_t kLongestText = 4096;

  std::ifstream m_file;
  std::uint64_t m_size = 0;
  bool m_bigEndian = false;
};

struct LibraryHeader;
enum class LibraryPart;

// Fill `header` from a file whose first bytes are those of the format. Throw Broken.
void ReadElf(FileBytes& file, LibraryPart part, LibraryHeader& header);
void ReadPe(FileBytes& file, LibraryPart part, LibraryHeader& header);
