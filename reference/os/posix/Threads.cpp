#include "reference/os/Threads.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <new>
#include <optional>

#include "reference/os/posix/AlternateStack.h"

namespace {

/// The alternate signal stack of a thread. The destructor restores the previous one, which a
/// sanitizer may have set.
class AlternateStack {
 public:
  AlternateStack() {
    // A guard area at the low end is not accessible: the alternate stack may overflow as well.
    void* memory = mmap(nullptr, kGuard + kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    m_memory = static_cast<char*>(memory);
    stack_t stack = {};
    stack.ss_sp = m_memory + kGuard;
    stack.ss_size = kSize;
    if (mprotect(stack.ss_sp, kSize, PROT_READ | PROT_WRITE) != 0) return;
    m_used = sigaltstack(&stack, &m_before) == 0;
  }
  ~AlternateStack() {
    if (m_used) sigaltstack(&m_before, nullptr);
    if (m_memory != nullptr) munmap(m_memory, kGuard + kSize);
  }
  AlternateStack(const AlternateStack&) = delete;
  AlternateStack& operator=(const AlternateStack&) = delete;

 private:
  static constexpr std::size_t kGuard = 0x10000;  // a multiple of every page size
  static constexpr std::size_t kSize = 0x40000;   // mostly needed to read debug information

  char* m_memory = nullptr;
  bool m_used = false;
  stack_t m_before = {};
};

/// The key under which each thread keeps its alternate stack, which is freed when the thread ends.
/// Not a thread_local object: registering its destructor takes the loader's lock, so that a thread
/// could not begin while a library loads, and a library whose initialiser waits for its own thread
/// would load for ever.
std::optional<pthread_key_t> MakeStackKey() {
  pthread_key_t key{};
  const auto free = [](void* stack) { delete static_cast<AlternateStack*>(stack); };
  if (pthread_key_create(&key, free) != 0) return std::nullopt;
  return key;
}

/// The length of the longest prefix of `text` with at most `limit` bytes that does not end inside a
/// character.
std::size_t CutLength(const std::string& text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  std::size_t length = limit;
  while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) --length;
  return length;
}

}  // namespace

void UseAlternateStack() {
  static const std::optional<pthread_key_t> key = MakeStackKey();
  if (!key || pthread_getspecific(*key) != nullptr) return;
  std::unique_ptr<AlternateStack> stack(new (std::nothrow) AlternateStack);
  if (pthread_setspecific(*key, stack.get()) == 0) (void)stack.release();
}

void PrepareWorkerThread() {
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  UseAlternateStack();
}

void NameThread(const std::string& name) {
  constexpr std::size_t longest = 15;
  pthread_setname_np(pthread_self(), name.substr(0, CutLength(name, longest)).c_str());
}

std::uint64_t ThreadNumber() {
  return static_cast<std::uint64_t>(gettid());
}
