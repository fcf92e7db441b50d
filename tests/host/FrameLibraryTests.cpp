#include "host/FrameLibrary.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace {

/// Why the library at `path` is not the frame's.
std::string Refused(const std::string& path) {
  try {
    FrameLibrary{path};
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(FrameLibrary, ThatLacksAnEntryIsNamedWithIt) {
  const std::string library = TEV_FIXTURES "/without_entries.dll";
  EXPECT_EQ(library + ": exports no Frame_Init; is it the frame's library?", Refused(library));
}

TEST(FrameLibrary, ThatIsNoLibraryIsNamedWithWhatItIs) {
  const TemporaryFolder folder;
  const std::string library = folder.Write("frame.dll", "this is no library");
  EXPECT_EQ("the frame's library, which belongs beside HUB: " + library +
                " is no library: neither ELF nor PE",
            Refused(library));
}

}  // namespace
