#include "reference/os/ProcessInfo.h"

#include <sched.h>
#include <unistd.h>
#include <climits>

#include <algorithm>
#include <cerrno>
#include <vector>

std::uint64_t ProcessNumber() {
  return static_cast<std::uint64_t>(getpid());
}

std::string HostName() {
  char name[HOST_NAME_MAX + 1] = {};
  return gethostname(name, HOST_NAME_MAX) == 0 ? name : "";
}

int UsableCores() {
  // The kernel refuses a set that is smaller than its own.
  for (std::size_t sets = 1; sets <= 64; sets *= 2) {
    std::vector<cpu_set_t> cores(sets);
    const std::size_t size = sets * sizeof(cpu_set_t);
    if (sched_getaffinity(0, size, cores.data()) == 0) {
      return std::max(1, CPU_COUNT_S(size, cores.data()));
    }
    if (errno != EINVAL) break;
  }
  return 1;
}
