#include "reference/os/Modules.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>

namespace {

struct Search {
  std::uintptr_t base;
  std::optional<ModuleRange> found;
};

int TakeRange(dl_phdr_info* module, std::size_t, void* argument) {
  Search& search = *static_cast<Search*>(argument);
  if (module->dlpi_addr != search.base) return 0;
  ModuleRange range{UINTPTR_MAX, 0};
  for (int i = 0; i < module->dlpi_phnum; ++i) {
    const ElfW(Phdr)& part = module->dlpi_phdr[i];
    if (part.p_type != PT_LOAD) continue;
    const std::uintptr_t begin = search.base + part.p_vaddr;
    range.begin = std::min(range.begin, begin);
    range.end = std::max<std::uintptr_t>(range.end, begin + part.p_memsz);
  }
  if (range.end != 0) search.found = range;
  return 1;
}

}  // namespace

std::optional<ModuleRange> LoadedModule(const std::string& path) {
  if (path.empty()) return std::nullopt;  // for dlopen an empty path means the program itself
  // dlopen also finds it when it was loaded by another path; comparing names would not.
  void* library = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (library == nullptr) return std::nullopt;
  link_map* map = nullptr;
  Search search{0, std::nullopt};
  if (dlinfo(library, RTLD_DI_LINKMAP, &map) == 0) {
    search.base = map->l_addr;
    dl_iterate_phdr(&TakeRange, &search);
  }
  dlclose(library);
  return search.found;
}
