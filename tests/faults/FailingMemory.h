#pragma once

/// The memory of one thread. The test program that this is linked into replaces operator new and
/// delete, and on Linux the call by which Boost makes a mutex.
///
/// Every thread has its own, so that only the code under test runs out of memory.
struct ThreadMemory {
  bool armed = false;      // allocations are counted, and may fail
  bool exhausted = false;  // every allocation of the frame fails, and so does every new mutex
  long count = 0;          // allocations while armed
  long failing = 0;        // the one of them that fails; 0: none
  long live = 0;           // allocated and not freed while armed
};

/// That of the calling thread.
ThreadMemory& Memory();
