#include "tests/reference/Program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace {

void SendTo(const std::string& file, int descriptor) {
  dup2(open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), descriptor);
}

}  // namespace

ProgramEnd RunProgram(const std::string& program, const std::string& argument) {
  const TemporaryFolder folder;
  const pid_t child = fork();
  if (child == 0) {
    SendTo(folder / "output", STDOUT_FILENO);
    SendTo(folder / "errors", STDERR_FILENO);
    execl(program.c_str(), program.c_str(), argument.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  const std::string end = WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                              : "status " + std::to_string(WEXITSTATUS(status));
  return {end, folder.Read("output"), folder.Read("errors")};
}
