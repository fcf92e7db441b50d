#include "reference/os/LoaderLog.h"

void SetLoaderLog(LoaderLogFn) {}
