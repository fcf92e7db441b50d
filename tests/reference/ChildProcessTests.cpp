#include "reference/os/ChildProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ostream>
#include <system_error>

#include "reference/os/LocalText.h"
#include "tests/support/TemporaryFolder.h"

using std::chrono::milliseconds;

// NOLINTNEXTLINE(readability-identifier-naming): GoogleTest looks for this name
void PrintTo(const ChildEnd& end, std::ostream* output) {
  *output << (end.crashed ? "crashed with " : "status ") << end.code;
}

namespace {

constexpr std::chrono::minutes kLimit{1};

ChildSettings Child(const std::vector<std::string>& arguments) {
  ChildSettings settings;
  settings.program = PathFromLocal(TEV_REFERENCE_CHILD);
  settings.arguments = arguments;
  return settings;
}

TEST(ChildProcessArguments, ArriveUnchanged) {
  const TemporaryFolder folder;
  ChildSettings settings = Child({"print", "a b", "", R"(quo"te)", R"(end\)", R"(a\\"b)", "*"});
  settings.output = folder.Path() / "output";
  EXPECT_EQ((ChildEnd{false, 3}), ChildProcess(settings).WaitFor(kLimit));
  EXPECT_EQ(R"([a b][][quo"te][end\][a\\"b][*])", folder.Read("output"));
}

TEST(ChildProcessEnvironment, IsTheOwn) {
  const TemporaryFolder folder;
  ChildSettings settings = Child({"print", "x"});
  settings.output = folder.Path() / "both";
  settings.errors = folder.Path() / "both";
  EXPECT_EQ((ChildEnd{false, 3}), ChildProcess(settings).WaitFor(kLimit));
  EXPECT_EQ("[x] a path", folder.Read("both"));
}

TEST(ChildProcessWithoutFiles, HasItsOutputDiscarded) {
  EXPECT_EQ((ChildEnd{false, 3}), ChildProcess(Child({"print", "x"})).WaitFor(kLimit));
}

TEST(ChildProcessFile, IsEmptiedFirst) {
  const TemporaryFolder folder;
  folder.Write("output", "a long text of an earlier run");
  ChildSettings settings = Child({"print", "x"});
  settings.output = folder.Path() / "output";
  ChildProcess(settings).WaitFor(kLimit);
  EXPECT_EQ("[x]", folder.Read("output"));
}

TEST(ChildProcessThatRuns, HasNoEndWithinTheLimit) {
  ChildProcess child(Child({"until-stopped"}));
  EXPECT_EQ(std::nullopt, child.WaitFor(milliseconds(0)));
}

TEST(EndedChildProcess, CannotBeAskedToStop) {
  ChildProcess child(Child({"print"}));
  child.WaitFor(kLimit);
  EXPECT_FALSE(child.RequestStop());
}

TEST(ChildProgramThatIsMissing, IsNamedInTheError) {
  ChildSettings settings;
  settings.program = "no-such-program";
  try {
    const ChildProcess child(settings);
    ADD_FAILURE() << "it was started";
  } catch (const std::system_error& error) {
    EXPECT_EQ(0U, std::string(error.what()).find("no-such-program: ")) << error.what();
  }
}

TEST(ChildOutputThatCannotBeOpened, IsNamedInTheError) {
  const TemporaryFolder folder;
  ChildSettings settings = Child({"print"});
  settings.output = folder.Path() / "missing" / "output";
  try {
    const ChildProcess child(settings);
    ADD_FAILURE() << "it was started";
  } catch (const std::system_error& error) {
    EXPECT_EQ(0U, std::string(error.what()).find(LocalFromPath(settings.output) + ": "));
  }
}

}  // namespace
