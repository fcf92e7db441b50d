#pragma once

#include <cstdint>
#include <string>

#include "src/private/XmlProto.h"

namespace TevModelParse {

/// Reads a list: counts the elements that match `listPath` and calls `read` with the path of each,
/// listPath + "[" + position from 1 + "]". Returns the count.
///
/// A position counts inside each parent, as XPath has it: with the elements spread over several
/// parents, one path may match several of them (the first counts) and the last ones may match none.
template <typename Read>
std::int32_t ReadList(const CXmlProto& document, const std::string& listPath, Read read) {
  const std::int32_t count = document.GetNodeCount(listPath);
  for (std::int32_t position = 1; position <= count; ++position) {
    read(listPath + "[" + std::to_string(position) + "]");
  }
  return count;
}

}  // namespace TevModelParse
