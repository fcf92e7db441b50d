// A file read whole, its stand-ins, and what each way must give. The first byte says which of the
// files are there and which way is asked for; the rest, cut in two at the last byte "|", is what
// they hold.

#include "fuzz/FuzzTarget.h"
#include "src/private/XmlProto.h"

namespace {

/// Without the line feeds at the end; a file of nothing else stays as it is.
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
