// Preloaded into HUB, simulates a system that has no more threads: pthread_create fails after
// TEV_THREADS calls, or waits for ever if TEV_THREADS_HANG is set.

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace {

std::atomic<int> g_created{0};

}  // namespace

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*function)(void*), void* argument) {
  using CreateFn = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto next = reinterpret_cast<CreateFn>(dlsym(RTLD_NEXT, "pthread_create"));
  const char* most = std::getenv("TEV_THREADS");
  if (most != nullptr && g_created.fetch_add(1) >= std::atoi(most)) {
    while (std::getenv("TEV_THREADS_HANG") != nullptr) pause();
    return EAGAIN;
  }
  return next(thread, attributes, function, argument);
}
