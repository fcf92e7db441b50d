#pragma once

#include <string>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/PluginLibrary.h"
#include "workbench/check/RuleFinding.h"

// Pieces of the messages on plugins' libraries.

/// A finding on the library or program of the plugin `id`: it stands at the file.
RuleFinding LibraryFinding(const std::string& id, const PluginLibrary& library,
                           const std::string& subject);

/// What a library that cannot be loaded, or a program that cannot be run, means: `"a.server" is not
/// started`.
std::string LossOf(const CheckedProduct& product, const std::string& id,
                   const PluginLibrary& library);

/// What is wrong with a file that is neither good nor missing: "is empty".
std::string WrongFile(const PluginLibrary& library);
