#include "workbench/product/LibraryHeader.h"

#include <algorithm>
#include <cstddef>
#include <system_error>

#include "workbench/product/FileBytes.h"

namespace fs = std::filesystem;

FileBytes::FileBytes(const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  if (error) return;  // no regular file: opening a pipe would block
  m_file.open(file, std::ios::binary);
  m_size = size;
}

std::string FileBytes::Bytes(std::uint64_t offset, std::size_t size) {
  if (offset > m_size || size > m_size - offset) throw Broken();
  std::string bytes(size, '\0');
  m_file.clear();
  m_file.seekg(static_cast<std::streamoff>(offset));
  m_file.read(bytes.data(), static_cast<std::streamsize>(size));
  if (m_file.gcount() != static_cast<std::streamsize>(size)) throw Broken();
  return bytes;
}

std::uint64_t FileBytes::Number(std::uint64_t offset, std::size_t size) {
  std::string bytes = Bytes(offset, size);
  if (!m_bigEndian) std::reverse(bytes.begin(), bytes.end());
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8U | static_cast<unsigned char>(byte);
  return number;
}

std::string FileBytes::Text(std::uint64_t offset) {
  if (offset >= m_size) throw Broken();
  const auto size = std::min<std::uint64_t>(kLongestText, m_size - offset);
  std::string text = Bytes(offset, static_cast<std::size_t>(size));
  const std::size_t end = text.find('\0');
  if (end == std::string::npos) throw Broken();
  text.resize(end);
  return text;
}

LibraryHeader ReadLibraryHeader(const fs::path& file, LibraryPart part) {
  using Format = LibraryHeader::Format;
  LibraryHeader header;
  FileBytes bytes(file);
  if (!bytes.IsOpen()) {
    header.format = Format::kUnreadable;
    return header;
  }
  try {
    const std::string magic = bytes.Bytes(0, 4);
    if (magic == "\177ELF") {
      header.format = Format::kElf;
      ReadElf(bytes, part, header);
    } else if (magic.compare(0, 2, "MZ") == 0) {
      header.format = Format::kPe;
      ReadPe(bytes, part, header);
    }
  } catch (const FileBytes::Broken&) {
    header.broken = header.format != Format::kNone;
  }
  return header;
}
