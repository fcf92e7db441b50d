#include "reference/os/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace fs = std::filesystem;

namespace {

[[noreturn]] void Fail(int error, const fs::path& file) {
  throw std::system_error(error, std::generic_category(), file.string());
}

/// An open file that the child gets under another number; the parent's own is not inherited.
class OpenFile {
 public:
  OpenFile(const fs::path& file, int flags)
      : m_descriptor(open(file.c_str(), flags | O_CLOEXEC, 0666)) {
    if (m_descriptor < 0) Fail(errno, file);
  }
  ~OpenFile() { close(m_descriptor); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int Descriptor() const { return m_descriptor; }

 private:
  const int m_descriptor;
};

/// A file for output. Both outputs may go to it, so each write appends.
OpenFile OutputFile(const fs::path& file) {
  constexpr int flags = O_WRONLY | O_CREAT | O_APPEND;
  return OpenFile(file.empty() ? fs::path("/dev/null") : file,
                  file.empty() ? O_WRONLY : flags | O_TRUNC);
}

/// A list of texts as the system's functions take it.
class TextArray {
 public:
  explicit TextArray(std::vector<std::string> texts) : m_texts(std::move(texts)) {
    for (std::string& text : m_texts) m_pointers.push_back(text.data());
    m_pointers.push_back(nullptr);
  }
  char* const* Get() const { return m_pointers.data(); }

 private:
  std::vector<std::string> m_texts;
  std::vector<char*> m_pointers;
};

/// Starts the program with default signal actions and no blocked signal.
pid_t Spawn(const ChildSettings& settings) {
  const OpenFile input("/dev/null", O_RDONLY);
  const OpenFile output = OutputFile(settings.output);
  const OpenFile errors = OutputFile(settings.errors);
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, input.Descriptor(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&files, output.Descriptor(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&files, errors.Descriptor(), STDERR_FILENO);

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  sigaddset(&signals, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);

  std::vector<std::string> words = settings.arguments;
  words.insert(words.begin(), settings.program.string());
  pid_t process = -1;
  const int error = posix_spawn(&process, settings.program.c_str(), &files, &attributes,
                                TextArray(words).Get(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  if (error != 0) Fail(error, settings.program);
  return process;
}

ChildEnd EndOf(int status) {
  if (WIFSIGNALED(status)) return {true, WTERMSIG(status)};
  return {false, WEXITSTATUS(status)};
}

}  // namespace

/// The child and the thread that waits for its end: no call of the system waits for a process with
/// a time limit.
struct ChildProcess::System {
  explicit System(const ChildSettings& settings) : process(Spawn(settings)) {
    try {
      waiter = std::thread([this] { WaitForEnd(); });
    } catch (...) {
      kill(process, SIGKILL);
      waitpid(process, nullptr, 0);
      throw;
    }
  }

  /// The child stays a zombie, with its number, until m_mutex is held: so `Send` can never reach
  /// another process that got the same number.
  void WaitForEnd() {
    siginfo_t ended = {};
    while (waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT) != 0) {
      if (errno != EINTR) break;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    end = EndOf(status);
    hasEnded.notify_all();
  }

  bool Send(int signal) {
    const std::lock_guard<std::mutex> lock(mutex);
    return !end && kill(process, signal) == 0;
  }

  const pid_t process;
  std::thread waiter;

  std::mutex mutex;
  std::condition_variable hasEnded;
  std::optional<ChildEnd> end;  // guarded by mutex
};

bool ChildEnd::operator==(const ChildEnd& other) const {
  return crashed == other.crashed && code == other.code;
}

ChildProcess::ChildProcess(const ChildSettings& settings)
    : m_system(std::make_unique<System>(settings)) {}

ChildProcess::~ChildProcess() {
  Kill();
  m_system->waiter.join();
}

std::optional<ChildEnd> ChildProcess::WaitFor(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(m_system->mutex);
  m_system->hasEnded.wait_for(lock, limit, [this] { return m_system->end.has_value(); });
  return m_system->end;
}

bool ChildProcess::RequestStop() noexcept {
  return m_system->Send(SIGTERM);
}

void ChildProcess::Kill() noexcept {
  m_system->Send(SIGKILL);
}

std::uint64_t ChildProcess::Id() const {
  return static_cast<std::uint64_t>(m_system->process);
}
