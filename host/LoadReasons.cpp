#include "host/LoadReasons.h"

#include "host/PluginHeads.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "workbench/product/Libraries.h"

std::string BetterReason(const std::string&, const FrameEvent& event, const std::string& reason) {
  if (event.kind == FrameEvent::Kind::kInitMissing) {
    return event.reason.empty() ? reason : reason + "; it is " + event.reason;
  }
  if (event.kind != FrameEvent::Kind::kLoadFailed) return reason;
  const LoadingProgram program{PathFromLocal(ProcessPath()), {}};
  return WhyNotLoaded(PathFromLocal(event.path), reason, program, SystemNames());
}

std::string MangledExport(const std::string& library, const char* function) {
  const HMODULE handle = LoadLibraryW(LocalToWide(library).c_str());
  if (handle == nullptr) return std::string();
  const std::string name = function;
  std::string clause;
  // As GCC and Clang, and as Microsoft's compiler name `bool Init()`.
  for (const std::string& mangled :
       {"_Z" + std::to_string(name.size()) + name + "v", "?" + name + "@@YA_NXZ"}) {
    if (GetProcAddress(handle, mangled.c_str()) != nullptr) {
      clause = "exported as " + mangled + ": is extern \"C\" missing?";
      break;
    }
  }
  FreeLibrary(handle);
  return clause;
}
