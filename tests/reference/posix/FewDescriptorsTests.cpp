// Not built with a sanitizer, which needs descriptors itself to look at the exception.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <system_error>

#include "reference/os/Terminal.h"

namespace {

TEST(OwnOutput, OutputThatCannotBeDuplicatedIsRefusedWithTheReason) {
  const pid_t child = fork();
  if (child == 0) {
    const rlimit standardDescriptorsOnly = {3, 3};
    setrlimit(RLIMIT_NOFILE, &standardDescriptorsOnly);
    try {
      const OwnOutput output;
    } catch (const std::system_error& error) {
      const std::string expected = "standard output cannot be duplicated: Invalid argument";
      _exit(error.what() == expected ? 0 : 2);
    }
    _exit(1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(0, status);
}

}  // namespace
