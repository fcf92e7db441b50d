// The recursive lock's virtual table, for this library to export under the lock's own name.
//
// The compiler makes a class's table where its destructor is defined. That is the runtime, and a
// library can export only what it defines. So the table is written out here as the C++ ABI lays it
// out; its type and both forms of its destructor are the runtime's.

#include <cstddef>
#include <typeinfo>

#include "sdk/xrt/lock.h"

extern "C" {

void CompleteDestructor() asm("_ZN3xrt19xrt_recursive_mutexD1Ev");
void DeletingDestructor() asm("_ZN3xrt19xrt_recursive_mutexD0Ev");

struct RecursiveMutexTable {
  std::ptrdiff_t offsetToTop;
  const std::type_info* type;
  void (*completeDestructor)();
  void (*deletingDestructor)();
};

extern const RecursiveMutexTable g_recursiveMutexTable asm("_ZTVN3xrt19xrt_recursive_mutexE");
const RecursiveMutexTable g_recursiveMutexTable = {0, &typeid(xrt::xrt_recursive_mutex),
                                                   &CompleteDestructor, &DeletingDestructor};

}  // extern "C"
