// The stack of a crash: unwound by the compiler's runtime, with names and lines from libbacktrace.
// Neither needs the heap; only demangling a name does, and is abandoned if it hangs or crashes.

#include <backtrace.h>
#include <cxxabi.h>
#include <link.h>
#include <ucontext.h>
#include <unwind.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "reference/os/ProcessPath.h"
#include "reference/os/posix/CrashRun.h"

namespace {

constexpr std::size_t kMostFrames = 64;

backtrace_state* g_debugInformation = nullptr;
CrashText g_program;  // the file name of the running program
const void* g_caller = nullptr;

struct Stack {
  std::uintptr_t code[kMostFrames];  // an address inside the instruction that calls or crashed
  std::size_t count;
  bool begun;
  bool cut;  // there are more frames
  Interrupted interrupted;
};

enum class Detail { kDemangled, kMangled, kModule };

/// How much of the stack has been written; kept when a step is abandoned after a crash.
struct Progress {
  SystemFile file;
  Stack stack;
  std::size_t next;  // the first frame not yet written
  int number;        // of the next line
  int written;       // lines of frame `next` that have been written, which are not repeated
  Detail detail;
};

_Unwind_Reason_Code AddFrame(_Unwind_Context* context, void* argument) {
  Stack& stack = *static_cast<Stack*>(argument);
  int interrupted = 0;  // 0: the address is the one after the call
  const std::uintptr_t code = _Unwind_GetIPInfo(context, &interrupted);
  if (!stack.begun) {
    const auto caller = reinterpret_cast<std::uintptr_t>(g_caller);
    stack.begun = caller != 0 ? code == caller : interrupted != 0;
    if (!stack.begun) return _URC_NO_REASON;
    if (interrupted != 0) {
      stack.interrupted = {code, _Unwind_GetCFA(context)};
    }
  }
  if (code == 0 && interrupted == 0) return _URC_END_OF_STACK;  // above a thread's first function
  stack.cut = stack.count == kMostFrames;
  if (stack.cut) return _URC_END_OF_STACK;
  stack.code[stack.count++] = interrupted != 0 ? code : code - 1;
  return _URC_NO_REASON;
}

/// A loaded file, found by an address in it.
struct Module {
  std::uintptr_t address;
  const char* path;
  std::uintptr_t base;
};

/// Returns 1 when `module` contains the address. Unlike dladdr, dl_iterate_phdr waits for no lock
/// that is held while a library's constructors run.
int FindModule(dl_phdr_info* module, std::size_t, void* argument) {
  Module& search = *static_cast<Module*>(argument);
  for (int i = 0; i < module->dlpi_phnum; ++i) {
    const ElfW(Phdr)& part = module->dlpi_phdr[i];
    const std::uintptr_t begin = module->dlpi_addr + part.p_vaddr;
    if (part.p_type != PT_LOAD || search.address - begin >= part.p_memsz) continue;
    search.path = module->dlpi_name;
    search.base = module->dlpi_addr;
    return 1;
  }
  return 0;
}

Module ModuleOf(std::uintptr_t address) {
  Module module = {address, nullptr, 0};
  dl_iterate_phdr(&FindModule, &module);
  return module;
}

/// After a call to an address without code there is no frame to unwind. The return address is then
/// on top of the stack, on machines that keep return addresses there.
void GuessCaller(Stack& stack) {
  const std::uintptr_t top = stack.interrupted.stackPointer;
  if (stack.count != 1 || top == 0 || ModuleOf(stack.code[0]).path != nullptr) return;
  std::uintptr_t code = 0;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the unwinder gives addresses as numbers
  std::memcpy(&code, reinterpret_cast<const void*>(top), sizeof(code));
  if (ModuleOf(code).path != nullptr) stack.code[stack.count++] = code - 1;
}

void TakeStack(void* argument) {
  Stack& stack = static_cast<Progress*>(argument)->stack;
  _Unwind_Backtrace(&AddFrame, &stack);
  if (!stack.begun) {  // no frame has the caller's address: take all frames
    stack.begun = true;
    _Unwind_Backtrace(&AddFrame, &stack);
  }
  GuessCaller(stack);
}

void AddName(CrashText& line, const char* name, Detail detail) {
  int error = 0;
  char* readable =
      detail == Detail::kDemangled ? abi::__cxa_demangle(name, nullptr, nullptr, &error) : nullptr;
  line.Add(" ").Add(readable != nullptr ? readable : name);
  std::free(readable);
}

void AddModule(CrashText& line, std::uintptr_t code) {
  const Module module = ModuleOf(code);
  if (module.path == nullptr) {
    line.Add(" ").AddHex(code).Add(" in no loaded library");
    return;
  }
  const char* slash = std::strrchr(module.path, '/');
  std::string_view name = slash != nullptr ? slash + 1 : module.path;
  if (name.empty()) name = g_program.View();
  line.Add(" in ").AddEscaped(name).Add("+").AddHex(code - module.base);
}

/// What libbacktrace reports on one frame. With inlining it has several functions, the innermost
/// first; only the last one, into which the others were inlined, is in the symbol table.
struct Frame {
  Progress& progress;
  std::uintptr_t code;
  CrashText symbol;
  CrashText function;  // of the line to be written next
  CrashText place;
  bool hasLine = false;
  int lines = 0;
};

void WriteLine(Frame& frame, const CrashText& name) {
  Progress& progress = frame.progress;
  if (frame.lines++ < progress.written) return;
  CrashText line;
  line.Add("#").AddNumber(progress.number);
  if (!name.View().empty()) AddName(line, name.CStr(), progress.detail);
  line.Add(frame.place.View());
  AddModule(line, frame.code);
  WriteCrashText(progress.file, line.Add("\n").View());
  ++progress.number;
  ++progress.written;
}

void IgnoreError(void*, const char*, int) {}

void TakeSymbol(void* argument, std::uintptr_t, const char* name, std::uintptr_t, std::uintptr_t) {
  if (name != nullptr) static_cast<Frame*>(argument)->symbol.Add(name);
}

int TakeLine(void* argument, std::uintptr_t, const char* file, int number, const char* function) {
  Frame& frame = *static_cast<Frame*>(argument);
  if (frame.hasLine) WriteLine(frame, frame.function);
  frame.hasLine = true;
  frame.function = frame.place = CrashText();
  if (function != nullptr) frame.function.Add(function);
  if (file != nullptr) frame.place.Add(" at ").AddEscaped(file).Add(":").AddNumber(number);
  return 0;
}

void WriteFrames(void* argument) {
  Progress& progress = *static_cast<Progress*>(argument);
  for (; progress.next < progress.stack.count; ++progress.next) {
    const std::uintptr_t code = progress.stack.code[progress.next];
    Frame frame = {progress, code, {}, {}, {}};
    if (progress.detail != Detail::kModule && g_debugInformation != nullptr) {
      backtrace_syminfo(g_debugInformation, code, &TakeSymbol, &IgnoreError, &frame);
      backtrace_pcinfo(g_debugInformation, code, &TakeLine, &IgnoreError, &frame);
    }
    WriteLine(frame, frame.symbol.View().empty() ? frame.function : frame.symbol);
    progress.written = 0;
  }
}

}  // namespace

void PrepareStack() {
  g_debugInformation = backtrace_create_state(nullptr, 1, &IgnoreError, nullptr);
  const std::string program = ProcessPath();
  g_program.Add(program.substr(program.rfind('/') + 1));
}

Interrupted InterruptedCode(const void* context) noexcept {
  const greg_t* registers = static_cast<const ucontext_t*>(context)->uc_mcontext.gregs;
  return {static_cast<std::uintptr_t>(registers[REG_RIP]),
          static_cast<std::uintptr_t>(registers[REG_RSP])};
}

void BeginStackAt(const void* caller) noexcept {
  g_caller = caller;
}

const void* FindInCrashStack(bool (*isWanted)(const void* code)) noexcept {
  Progress progress = {};
  RunGuarded(2, &TakeStack, &progress);
  for (std::size_t i = 0; i < progress.stack.count; ++i) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the unwinder gives addresses as numbers
    const auto* code = reinterpret_cast<const void*>(progress.stack.code[i]);
    if (isWanted(code)) return code;
  }
  return nullptr;
}

void WriteCrashStack(SystemFile file) noexcept {
  Progress progress = {};
  progress.file = file;
  const bool complete = RunGuarded(2, &TakeStack, &progress);
  // Each step writes fewer details than the one before and is less likely to hang or crash.
  for (const Detail detail : {Detail::kDemangled, Detail::kMangled, Detail::kModule}) {
    progress.detail = detail;
    if (RunGuarded(2, &WriteFrames, &progress)) break;
  }
  if (progress.stack.cut) WriteCrashText(file, "... more callers\n");
  if (!complete) WriteCrashText(file, "... the rest of the stack cannot be read\n");
}
