#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unordered_map>

/// Reads numbers and texts at given offsets of a file that may be damaged.
///
/// The file is read in pages, each once and only when something in it is asked for, so that memory
/// is bounded by the file's size. Not thread-safe.
class FileBytes {
 public:
  /// Thrown when the requested bytes are not inside the file.
  struct Broken {};

  explicit FileBytes(const std::filesystem::path& file);

  bool IsOpen() const { return m_file.is_open(); }
  std::uint64_t Size() const { return m_size; }

  /// Whether `size` bytes at `offset` are inside the file.
  bool Contains(std::uint64_t offset, std::uint64_t size) const {
    return offset <= m_size && size <= m_size - offset;
  }

  /// `size` bytes at `offset`.
  std::string Bytes(std::uint64_t offset, std::uint64_t size);

  /// The number in the `size` bytes, at most 8, at `offset`.
  std::uint64_t Number(std::uint64_t offset, std::size_t size);

  /// Appends to `text` the bytes from `offset` to a zero byte. Throws
  /// Broken when there is none, or when `text` becomes longer than the file: the texts of a valid
  /// file do not overlap so much.
  void AppendText(std::uint64_t offset, std::string& text);

  void UseBigEndian(bool bigEndian) { m_bigEndian = bigEndian; }

 private:
  static constexpr std::uint64_t kPage = 16384;

  const std::string& Page(std::uint64_t number);
  void Read(std::uint64_t offset, char* bytes, std::uint64_t size);

  std::ifstream m_file;
  std::uint64_t m_size = 0;
  bool m_bigEndian = false;
  std::unordered_map<std::uint64_t, std::string> m_pages;
  std::uint64_t m_lastNumber = ~std::uint64_t{0};  // of the page that was used last
  const std::string* m_last = nullptr;
};

struct LibraryHeader;

// Fill `header` from a file whose first bytes are those of the format. Throw Broken.
void ReadElf(FileBytes& file, LibraryHeader& header);
void ReadPe(FileBytes& file, LibraryHeader& header);
