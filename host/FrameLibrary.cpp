#include "host/FrameLibrary.h"

#include <stdexcept>

#include "host/LoadReasons.h"
#include "reference/os/ProcessPath.h"
#include "sdk/base/path.h"

namespace {

template <typename Entry>
void LookUp(Entry& entry, HMODULE library, const char* name, const std::string& path) {
  // Cast through void(*)(): FARPROC has another signature.
  entry = reinterpret_cast<Entry>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
  if (entry == nullptr) {
    throw std::runtime_error(path + ": exports no " + name + "; is it the frame's library?");
  }
}

}  // namespace

FrameLibrary::FrameLibrary(const std::string& path) {
  m_library = LoadLibraryW(LocalToWide(path).c_str());
  const DWORD error = m_library == nullptr ? GetLastError() : 0;
  if (m_library == nullptr) {
    const std::string why = BetterLoadReason(path, "");
    throw std::runtime_error(
        "the frame's library, which belongs beside HUB: " +
        (why.empty() ? path + " cannot be loaded (error " + std::to_string(error) + ")" : why));
  }
  LookUp(m_init, m_library, "Frame_Init", path);
  LookUp(m_start, m_library, "Frame_Start", path);
  LookUp(m_stop, m_library, "Frame_Stop", path);
  LookUp(m_uninit, m_library, "Frame_UnInit", path);
}

void FrameLibrary::Unload() {
  FreeLibrary(m_library);
  m_library = nullptr;
}

std::string FrameLibrary::PathBesideProgram() {
  const std::string program = ProcessPath();
  return program.substr(0, program.find_last_of("/\\") + 1) + TEV_FRAME_LIBRARY;
}
