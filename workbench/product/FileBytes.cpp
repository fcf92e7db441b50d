#include "workbench/product/FileBytes.h"

#include <algorithm>
#include <cstddef>
#include <system_error>

namespace fs = std::filesystem;

FileBytes::FileBytes(const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  if (error) return;  // no regular file: opening a pipe would block
  m_file.rdbuf()->pubsetbuf(nullptr, 0);
  m_file.open(file, std::ios::binary);
  m_size = size;
}

void FileBytes::Read(std::uint64_t offset, char* bytes, std::uint64_t size) {
  m_file.clear();
  m_file.seekg(static_cast<std::streamoff>(offset));
  m_file.read(bytes, static_cast<std::streamsize>(size));
  if (m_file.gcount() != static_cast<std::streamsize>(size)) throw Broken();
}

const std::string& FileBytes::Page(std::uint64_t number) {
  if (number == m_lastNumber) return *m_last;
  std::string& page = m_pages[number];
  if (page.empty()) {
    const std::uint64_t begin = number * kPage;
    std::string bytes(static_cast<std::size_t>(std::min(kPage, m_size - begin)), '\0');
    Read(begin, bytes.data(), bytes.size());
    page = std::move(bytes);
  }
  m_lastNumber = number;
  m_last = &page;
  return page;
}

std::string FileBytes::Bytes(std::uint64_t offset, std::uint64_t size) {
  if (!Contains(offset, size)) throw Broken();
  std::string bytes(static_cast<std::size_t>(size), '\0');
  if (size > kPage) {
    Read(offset, bytes.data(), size);
    return bytes;
  }
  for (std::size_t done = 0; done < bytes.size();) {
    const std::string& page = Page((offset + done) / kPage);
    const auto from = static_cast<std::size_t>((offset + done) % kPage);
    const std::size_t part = std::min(page.size() - from, bytes.size() - done);
    bytes.replace(done, part, page, from, part);
    done += part;
  }
  return bytes;
}

std::uint64_t FileBytes::Number(std::uint64_t offset, std::size_t size) {
  if (!Contains(offset, size)) throw Broken();
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const std::uint64_t at = offset + (m_bigEndian ? i : size - 1 - i);
    const std::string& page = Page(at / kPage);
    number = number << 8U | static_cast<unsigned char>(page[at % kPage]);
  }
  return number;
}

void FileBytes::AppendText(std::uint64_t offset, std::string& text) {
  while (offset < m_size && text.size() < m_size) {
    const std::string& page = Page(offset / kPage);
    const auto from = static_cast<std::size_t>(offset % kPage);
    const std::size_t end = page.find('\0', from);
    text.append(page, from, end == std::string::npos ? end : end - from);
    if (end != std::string::npos) return;
    offset += page.size() - from;
  }
  throw Broken();
}
