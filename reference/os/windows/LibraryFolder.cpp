#include "reference/os/LibraryFolder.h"

#include "reference/os/LocalText.h"
#include "sdk/os/os.h"

void LookForLibrariesIn(const std::string& folder) {
  SetDllDirectoryW(WideFromLocal(folder).c_str());
}
