#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/Commands.h"
#include "host/FrameLibrary.h"
#include "reference/kpx/PlatformRecord.h"
#include "workbench/check/LibrarySystem.h"
#include "workbench/check/ProductReader.h"

/// What the platform was handed over. `platform` has a product model.
HandedOver HandedOverOf(PlatformRecord platform);

/// Reads the product at `place` and what the frame makes of it: initialises the frame, copies what
/// it hands over to the platform, and un-initialises it; but not if the product HoldsUpFrame. No
/// plugin is loaded; the libraries are read for `libraries`, null: they are not. Never null. Once
/// per process, as Frame_Init.
std::unique_ptr<CheckedProduct> ReadProductWithFrame(const ProductPlace& place,
                                                     std::int32_t runningModule,
                                                     const FrameLibrary& frame,
                                                     const LibrarySystem* libraries);

/// Reads the product whose executables are in `bin`, with what the frame makes of it; null when
/// `bin` is no folder. Once per process, as Frame_Init. A stop request ends the process.
std::unique_ptr<CheckedProduct> ReadProductIn(const std::string& bin, std::int32_t runningModule,
                                              HostContext& context);
