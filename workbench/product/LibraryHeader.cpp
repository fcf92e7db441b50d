#include "workbench/product/LibraryHeader.h"

#include "workbench/product/FileBytes.h"

LibraryHeader ReadLibraryHeader(const std::filesystem::path& file) {
  using Format = LibraryHeader::Format;
  LibraryHeader header;
  FileBytes bytes(file);
  if (!bytes.IsOpen()) {
    header.format = Format::kUnreadable;
    return header;
  }
  header.size = bytes.Size();
  try {
    if (bytes.Contains(0, 4) && bytes.Bytes(0, 4) == "\177ELF") {
      header.format = Format::kElf;
      ReadElf(bytes, header);
    } else if (bytes.Contains(0, 4) && bytes.Bytes(0, 2) == "MZ") {
      header.format = Format::kPe;
      ReadPe(bytes, header);
    }
  } catch (const FileBytes::Broken&) {
    header.broken = header.IsLibraryFile();
  }
  return header;
}
