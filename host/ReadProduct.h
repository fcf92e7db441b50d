#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/Commands.h"
#include "workbench/check/CheckedProduct.h"

/// Reads the product whose executables are in `bin`, with what the frame makes of it; null when
/// `bin` is no folder. Once per process, as Frame_Init. A stop request ends the process.
std::unique_ptr<CheckedProduct> ReadProductIn(const std::string& bin, std::int32_t runningModule,
                                              HostContext& context);
