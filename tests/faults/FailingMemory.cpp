#include "tests/faults/FailingMemory.h"

#include <pthread.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "tests/load/LibraryDoubles.h"

namespace {

thread_local ThreadMemory t_memory;

/// Whether the frame's code asks for memory on a thread that has none.
bool IsExhausted() {
  return t_memory.exhausted && !InDoubles::IsHere();
}

void* Allocate(std::size_t size) {
  if (IsExhausted()) return nullptr;
  if (t_memory.armed && ++t_memory.count == t_memory.failing) return nullptr;
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (t_memory.armed && memory != nullptr) ++t_memory.live;
  return memory;
}

void Free(void* memory) {
  if (t_memory.armed && memory != nullptr) --t_memory.live;
  std::free(memory);
}

}  // namespace

ThreadMemory& Memory() {
  return t_memory;
}

void* operator new(std::size_t size) {
  void* memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  Free(memory);
}
void operator delete(void* memory) noexcept {
  Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Free(memory);
}

// The linker leads all calls of pthread_mutex_init here. An empty container of this C++ library
// allocates nothing; what else shows that an object is made while there is no memory is its mutex.
extern "C" {

int __real_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes);
int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes);

int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
  return IsExhausted() ? ENOMEM : __real_pthread_mutex_init(mutex, attributes);
}

}  // extern "C"
