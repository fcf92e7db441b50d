#include "reference/os/Terminal.h"

#include <unistd.h>

bool StandardOutputIsTerminal() {
  return isatty(STDOUT_FILENO) == 1;
}
