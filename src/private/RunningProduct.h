#pragma once

#include <string>

// The running product, for readers that have no model at hand. Written once, while the model is
// read on the host's thread, and only read afterwards; both are empty before that.

extern std::string g_productName;     // the text of Product.xml's Product
extern std::string g_productVersion;  // the first three parts of its Version
