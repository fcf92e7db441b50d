// Replaces the C library's pthread_create for all libraries of the process, since the loader finds
// this library before the C library. It gives threads that a plugin creates an alternate signal
// stack too, so that their stack overflows are reported.

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <memory>
#include <new>

#include "reference/os/posix/AlternateStack.h"

namespace {

using StartFn = void* (*)(void*);
using CreateFn = int (*)(pthread_t*, const pthread_attr_t*, StartFn, void*);

struct Start {
  StartFn function;
  void* argument;
};

/// The first function of each thread.
void* Run(void* argument) {
  const Start start = *std::unique_ptr<Start>(static_cast<Start*>(argument));
  UseAlternateStack();
  return start.function(start.argument);
}

}  // namespace

extern "C" int CreateThread(pthread_t* thread, const pthread_attr_t* attributes, StartFn function,
                            void* argument) noexcept __asm__("pthread_create");

int CreateThread(pthread_t* thread, const pthread_attr_t* attributes, StartFn function,
                 void* argument) noexcept {
  static const auto create = reinterpret_cast<CreateFn>(dlsym(RTLD_NEXT, "pthread_create"));
  std::unique_ptr<Start> start(new (std::nothrow) Start{function, argument});
  if (start == nullptr) return EAGAIN;
  const int error = create(thread, attributes, &Run, start.get());
  if (error == 0) (void)start.release();
  return error;
}
