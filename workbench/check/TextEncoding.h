#pragma once

#include <optional>
#include <string>

#include "workbench/product/XmlTree.h"

/// A byte that cannot stand where it stands in UTF-8.
struct BadByte {
  unsigned char byte = 0;
  TextPlace place;
};

/// The first byte of `text` that is not UTF-8; none when all are.
std::optional<BadByte> FirstBadByte(const std::string& text);

/// The encoding whose byte-order mark, or whose way to write "<", is at the beginning of `text`:
/// "UTF-16" or "UTF-32"; empty for none of them.
std::string WideEncoding(const std::string& text);
