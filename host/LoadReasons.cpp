#include "host/LoadReasons.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "host/PluginHeads.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"
#include "workbench/product/Libraries.h"

std::string BetterLoadReason(const std::string& library, const std::string& message) {
  try {
    const LoadingProgram program{PathFromLocal(ProcessPath()), {}};
    const std::string reason =
        WhyNotLoaded(PathFromLocal(library), message, program, SystemNames());
    return reason == message ? std::string() : reason;
  } catch (const std::exception&) {  // a damaged library names a file that no path can express
    return std::string();
  }
}

std::string MangledExport(const std::string& library, const std::string& function) {
  const std::vector<std::string> exported = ExportedNames(PathFromLocal(library));
  // The mangled names of `bool Init()`: of GCC and Clang, and of Microsoft's compiler.
  for (const std::string& mangled :
       {"_Z" + std::to_string(function.size()) + function + "v", "?" + function + "@@YA_NXZ"}) {
    if (std::find(exported.begin(), exported.end(), mangled) != exported.end()) {
      return "exported as " + mangled + ": is extern \"C\" missing?";
    }
  }
  return std::string();
}
