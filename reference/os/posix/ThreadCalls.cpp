// The C library's pthread_create, as every library of the process finds it: this library stands
// before the C library in the loader's order. So a thread that a plugin creates can report an
// overflow of its stack as well.

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

/// The first code of each thread.
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
