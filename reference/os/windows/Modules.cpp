#include "reference/os/Modules.h"

#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

std::optional<ModuleRange> LoadedModule(const std::string& path) {
  if (path.empty()) return std::nullopt;  // the system would return the program itself
  const HMODULE module = GetModuleHandleW(PathFromLocal(path).make_preferred().c_str());
  if (module == nullptr) return std::nullopt;
  const auto begin = reinterpret_cast<std::uintptr_t>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(begin);
  const auto* header = reinterpret_cast<const IMAGE_NT_HEADERS64*>(
      begin + static_cast<std::uintptr_t>(dos->e_lfanew));
  return ModuleRange{begin, begin + header->OptionalHeader.SizeOfImage};
}
