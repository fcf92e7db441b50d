#include "src/PluginFrame/Plugin.h"

#include <exception>

#include "sdk/base/path.h"
#include "src/private/FrameLog.h"

namespace PluginFrame {

CPlugin::~CPlugin() {
  FRAME_LOG_AS("PluginFrame::CPlugin::~CPlugin");
  FRAME_LOG(kProgress, "[Plugin]FreeLibrary Begin");
  if (m_module != nullptr) FreeLibrary(m_module);
  FRAME_LOG(kProgress, "[Plugin]FreeLibrary End");
}

bool CPlugin::Load(const std::string& path) {
  FRAME_LOG_AS("PluginFrame::CPlugin::Load");
  const std::string file = path + ".dll";
  FRAME_LOG(kProgress, "[Plugin]start frame plugin Being path= [%s]", file.c_str());
  const HMODULE held = m_module;
  m_module = LoadLibraryW(LocalToWide(file).c_str());
  const DWORD error = m_module == nullptr ? GetLastError() : 0;
  if (held != nullptr && held == m_module) FreeLibrary(held);
  if (m_module == nullptr) {
    FRAME_LOG(kFailure, "[Plugin]Get dynamic library handle failed.path= %s,errorcode=%d",
              file.c_str(), static_cast<int>(error));
    return false;
  }
  FRAME_LOG(kProgress, "[Plugin]start frame plugin end success.path= [%s]", file.c_str());
  return true;
}

bool CPlugin::Init() {
  FRAME_LOG_AS("PluginFrame::CPlugin::Init");
  const Entry init = FindEntry("Init");
  if (init == nullptr) {
    FRAME_LOG(kFailure, "[Plugin]Get dynamic library Init symbol failed.");
    return false;
  }
  try {
    return init();
  } catch (const std::exception& error) {
    FRAME_LOG(kFailure, "[Plugin]Init threw [%s]", error.what());
  } catch (...) {
    FRAME_LOG(kFailure, "[Plugin]Init threw something that is no exception object");
  }
  return false;
}

bool CPlugin::UnInit() {
  FRAME_LOG_AS("PluginFrame::CPlugin::UnInit");
  const Entry uninit = FindEntry("UnInit");
  if (uninit == nullptr) {
    FRAME_LOG(kFailure, "[Plugin]Get dynamic library UnInit symbol failed.");
    return false;
  }
  try {
    return uninit();
  } catch (const std::exception& error) {
    FRAME_LOG(kFailure, "[Plugin]UnInit threw [%s]", error.what());
  } catch (...) {
    FRAME_LOG(kFailure, "[Plugin]UnInit threw something that is no exception object");
  }
  return false;
}

CPlugin::Entry CPlugin::FindEntry(const char* name) const {
  if (m_module == nullptr) return nullptr;
  // Cast through void(*)(): FARPROC has another signature.
  const auto entry = reinterpret_cast<void (*)()>(GetProcAddress(m_module, name));
  return reinterpret_cast<Entry>(entry);
}

}  // namespace PluginFrame
