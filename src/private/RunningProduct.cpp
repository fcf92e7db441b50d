#include "src/private/RunningProduct.h"

std::string g_productName;
std::string g_productVersion;
