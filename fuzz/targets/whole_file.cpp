// ReadWholeFile with a file and its stand-in, and the result that each combination must have. The
// first byte of the input says which files exist and whether the stand-in is named; the rest, split
// at the last "|", is the content of the two files.

#include "fuzz/FuzzTarget.h"
#include "src/private/XmlProto.h"

namespace {

/// `content` without the line feeds at its end; unchanged when it consists only of line feeds.
std::string Trimmed(const std::string& content) {
  const std::size_t last = content.find_last_not_of('\n');
  return last == std::string::npos ? content : content.substr(0, last + 1);
}

}  // namespace

void Fuzz(const std::string& input) {
  const FuzzFolder& folder = FuzzFolder::Instance();
  folder.Clear();
  const unsigned ways = input.empty() ? 0U : static_cast<unsigned char>(input[0]);
  const std::string rest = input.empty() ? std::string() : input.substr(1);
  const std::size_t cut = rest.rfind('|');
  const std::string first = rest.substr(0, cut);
  const std::string second = cut == std::string::npos ? std::string() : rest.substr(cut + 1);
  const bool hasFile = (ways & 1U) != 0;
  const bool namesAlternative = (ways & 2U) != 0;
  const bool hasStandIn = (ways & 4U) != 0;

  if (hasFile) folder.Write("model.v1.xml", first);
  const std::string standIn = namesAlternative ? "other.txt" : "model.v1.data";
  if (hasStandIn) folder.Write(standIn, second);

  std::string content = "untouched";
  const bool read = TevModelParse::ReadWholeFile(content, folder.Path("model.v1.xml"),
                                                 namesAlternative ? folder.Path(standIn) : "");
  if (hasFile && !first.empty()) {
    Check(read && content == Trimmed(first), "a file that is there is read");
  } else if (hasStandIn && !second.empty()) {
    Check(read && content == Trimmed(second), "a missing or empty file has its stand-in");
  } else {
    Check(!read && content == "untouched", "without either the content stays");
  }
}
