#include "reference/os/ChildProcess.h"

#include <algorithm>
#include <climits>
#include <system_error>
#include <utility>

#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

namespace fs = std::filesystem;

namespace {

constexpr UINT kKilled = 1;  // the exit status of a killed child

[[noreturn]] void Fail(DWORD error, const fs::path& file) {
  throw std::system_error(static_cast<int>(error), std::system_category(), LocalFromPath(file));
}

/// An open handle, which is closed at the end. Move-only.
class Handle {
 public:
  explicit Handle(HANDLE handle) : m_handle(handle) {}
  Handle(Handle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
  Handle& operator=(Handle&&) = delete;
  ~Handle() {
    if (m_handle != nullptr) CloseHandle(m_handle);
  }
  HANDLE Get() const { return m_handle; }

 private:
  HANDLE m_handle;
};

/// Opens a file whose handle the child inherits.
Handle Inherited(const fs::path& file, DWORD access, DWORD how) {
  SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  const HANDLE handle = CreateFileW(file.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    &inherited, how, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) Fail(GetLastError(), file);
  return Handle(handle);
}

/// A file for output. Both outputs may go to it, so each write appends.
Handle OutputFile(const fs::path& file) {
  if (file.empty()) return Inherited("NUL", GENERIC_WRITE, OPEN_EXISTING);
  Inherited(file, GENERIC_WRITE, CREATE_ALWAYS);
  return Inherited(file, FILE_APPEND_DATA | SYNCHRONIZE, OPEN_EXISTING);
}

/// The list of the handles that the child inherits: those of other files opened at the same time
/// stay with this process.
class InheritedHandles {
 public:
  explicit InheritedHandles(std::vector<HANDLE> handles) : m_handles(std::move(handles)) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    m_memory.resize(size);
    const bool set =
        InitializeProcThreadAttributeList(Get(), 1, 0, &size) != 0 &&
        UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_handles.data(),
                                  m_handles.size() * sizeof(HANDLE), nullptr, nullptr) != 0;
    if (!set) Fail(GetLastError(), "the child's handles");
  }
  ~InheritedHandles() { DeleteProcThreadAttributeList(Get()); }
  InheritedHandles(const InheritedHandles&) = delete;
  InheritedHandles& operator=(const InheritedHandles&) = delete;

  LPPROC_THREAD_ATTRIBUTE_LIST Get() {
    return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_memory.data());
  }

 private:
  std::vector<HANDLE> m_handles;
  std::vector<char> m_memory;
};

/// `word` in quotes, so that the C runtime of the child makes one argument of it: a quote and the
/// backslashes directly before it need a backslash each.
std::wstring Quoted(const std::wstring& word) {
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') quoted.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, L'\\') + L"\"";
}

std::wstring CommandLineOf(const ChildSettings& settings) {
  std::wstring line = Quoted(settings.program.wstring());
  for (const std::string& argument : settings.arguments) {
    line += L" " + Quoted(WideFromLocal(argument));
  }
  return line;
}

PROCESS_INFORMATION Create(const ChildSettings& settings) {
  const Handle input = Inherited("NUL", GENERIC_READ, OPEN_EXISTING);
  const Handle output = OutputFile(settings.output);
  const Handle errors = OutputFile(settings.errors);
  InheritedHandles handles({input.Get(), output.Get(), errors.Get()});
  STARTUPINFOEXW start = {};
  start.StartupInfo.cb = sizeof(start);
  start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  start.StartupInfo.hStdInput = input.Get();
  start.StartupInfo.hStdOutput = output.Get();
  start.StartupInfo.hStdError = errors.Get();
  start.lpAttributeList = handles.Get();
  std::wstring line = CommandLineOf(settings);
  PROCESS_INFORMATION process = {};
  constexpr DWORD flags = CREATE_NEW_PROCESS_GROUP | EXTENDED_STARTUPINFO_PRESENT;
  if (CreateProcessW(settings.program.c_str(), &line[0], nullptr, nullptr, TRUE, flags, nullptr,
                     nullptr, &start.StartupInfo, &process) == 0) {
    Fail(GetLastError(), settings.program);
  }
  CloseHandle(process.hThread);
  return process;
}

/// The codes from 0xC0000000 up are those of exceptions that nothing handled.
ChildEnd EndOf(DWORD status) {
  return {status >= 0xC0000000U, static_cast<std::int64_t>(status)};
}

}  // namespace

struct ChildProcess::System {
  explicit System(const PROCESS_INFORMATION& created)
      : process(created.hProcess), id(created.dwProcessId) {}

  const Handle process;
  const DWORD id;  // not used for another process while the handle is open
};

bool ChildEnd::operator==(const ChildEnd& other) const {
  return crashed == other.crashed && code == other.code;
}

ChildProcess::ChildProcess(const ChildSettings& settings)
    : m_system(std::make_unique<System>(Create(settings))) {}

ChildProcess::~ChildProcess() {
  Kill();
  WaitForSingleObject(m_system->process.Get(), INFINITE);
}

std::optional<ChildEnd> ChildProcess::WaitFor(std::chrono::milliseconds limit) {
  const auto wait = static_cast<DWORD>(std::clamp<long long>(limit.count(), 0, INT_MAX));
  if (WaitForSingleObject(m_system->process.Get(), wait) != WAIT_OBJECT_0) return std::nullopt;
  DWORD status = 0;
  GetExitCodeProcess(m_system->process.Get(), &status);
  return EndOf(status);
}

bool ChildProcess::RequestStop() noexcept {
  if (WaitForSingleObject(m_system->process.Get(), 0) == WAIT_OBJECT_0) return false;
  return GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, m_system->id) != 0;
}

void ChildProcess::Kill() noexcept {
  TerminateProcess(m_system->process.Get(), kKilled);
}

std::uint64_t ChildProcess::Id() const {
  return m_system->id;
}
