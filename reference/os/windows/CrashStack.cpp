#include "sdk/os/os.h"

#include <dbghelp.h>

#include <cxxabi.h>

#include <cstdlib>
#include <cstring>
#include <utility>

#include "reference/os/windows/CrashRun.h"

namespace {

constexpr std::size_t kMostFrames = 64;

struct Stack {
  SystemFile file;
  DWORD64 code[kMostFrames];  // an address inside the instruction that calls or crashed
  std::size_t count;
  bool cut;          // there are more frames
  std::size_t next;  // the first frame not yet written
  bool withNames;
};

/// For code without unwind data the return address is on top of the stack: it is either a function
/// that uses no stack, or no code at all, after a call of a null pointer.
bool LeaveSimpleFunction(CONTEXT& context) {
  DWORD64 code = 0;
  SIZE_T size = 0;
  if (ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(context.Rsp), &code,
                        sizeof(code), &size) == 0) {
    return false;
  }
  context.Rip = code;
  context.Rsp += sizeof(code);
  return true;
}

bool LeaveFunction(CONTEXT& context, bool first) {
  DWORD64 base = 0;
  RUNTIME_FUNCTION* const function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
  if (function == nullptr) return first && LeaveSimpleFunction(context);
  void* handlerData = nullptr;
  DWORD64 frame = 0;
  RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handlerData, &frame,
                   nullptr);
  return context.Rip != 0;
}

void TakeStack(void* argument) {
  Stack& stack = *static_cast<Stack*>(argument);
  const auto caller = reinterpret_cast<DWORD64>(CrashStackBegin().caller);
  CONTEXT context = CrashStackBegin().context;
  bool first = true;
  bool shown = caller == 0;
  do {
    shown = shown || context.Rip == caller;
    stack.cut = stack.count == kMostFrames;
    if (stack.cut) return;
    if (shown) stack.code[stack.count++] = first ? context.Rip : context.Rip - 1;
  } while (LeaveFunction(context, std::exchange(first, false)));
}

void AddModule(CrashText& line, DWORD64 code) {
  MEMORY_BASIC_INFORMATION memory = {};
  char path[MAX_PATH] = {};
  VirtualQuery(reinterpret_cast<const void*>(code), &memory, sizeof(memory));
  const auto module = reinterpret_cast<HMODULE>(memory.AllocationBase);
  if (module == nullptr || GetModuleFileNameA(module, path, MAX_PATH) == 0) {
    line.Add(" ").AddHex(code).Add(" in no loaded library");
    return;
  }
  const char* slash = std::strrchr(path, '\\');
  line.Add(" in ").AddEscaped(slash != nullptr ? slash + 1 : path).Add("+");
  line.AddHex(code - reinterpret_cast<DWORD64>(module));
}

void AddFunction(CrashText& line, DWORD64 code) {
  alignas(SYMBOL_INFO) char memory[sizeof(SYMBOL_INFO) + MAX_SYM_NAME] = {};
  auto* symbol = reinterpret_cast<SYMBOL_INFO*>(memory);
  symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
  symbol->MaxNameLen = MAX_SYM_NAME;
  DWORD64 offset = 0;
  if (SymFromAddr(GetCurrentProcess(), code, &offset, symbol) == 0) return;
  int error = 0;
  char* readable = abi::__cxa_demangle(symbol->Name, nullptr, nullptr, &error);
  line.Add(" ").Add(readable != nullptr ? readable : symbol->Name);
  std::free(readable);
  // In a library without debug information only exported functions are known: a large offset shows
  // that the code belongs to another function.
  line.Add("+").AddHex(offset);
  IMAGEHLP_LINE64 place = {};
  place.SizeOfStruct = sizeof(place);
  DWORD column = 0;
  if (SymGetLineFromAddr64(GetCurrentProcess(), code, &column, &place) != 0) {
    line.Add(" at ").AddEscaped(place.FileName).Add(":").AddNumber(place.LineNumber);
  }
}

void WriteFrames(void* argument) {
  Stack& stack = *static_cast<Stack*>(argument);
  for (; stack.next < stack.count; ++stack.next) {
    const DWORD64 code = stack.code[stack.next];
    CrashText line;
    line.Add("#").AddNumber(static_cast<std::int64_t>(stack.next));
    if (stack.withNames) AddFunction(line, code);
    AddModule(line, code);
    WriteCrashText(stack.file, line.Add("\n").View());
  }
}

void WriteFramesWithNames(void* argument) {
  SymSetOptions(SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS | SYMOPT_LOAD_LINES |
                SYMOPT_FAIL_CRITICAL_ERRORS);
  static_cast<Stack*>(argument)->withNames = SymInitialize(GetCurrentProcess(), nullptr, TRUE) != 0;
  WriteFrames(argument);
}

}  // namespace

const void* FindInCrashStack(bool (*isWanted)(const void* code)) noexcept {
  Stack stack = {};
  RunGuarded(&TakeStack, &stack);
  for (std::size_t i = 0; i < stack.count; ++i) {
    const auto* code = reinterpret_cast<const void*>(stack.code[i]);
    if (isWanted(code)) return code;
  }
  return nullptr;
}

void WriteCrashStack(SystemFile file) noexcept {
  Stack stack = {};
  stack.file = file;
  const bool complete = RunGuarded(&TakeStack, &stack);
  const bool named = CrashStackBegin().withNames && RunGuarded(&WriteFramesWithNames, &stack);
  stack.withNames = false;
  if (!named) RunGuarded(&WriteFrames, &stack);
  if (stack.cut) WriteCrashText(file, "... more callers\n");
  if (!complete) WriteCrashText(file, "... the rest of the stack cannot be read\n");
}
