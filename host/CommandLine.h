#pragma once

#include <optional>
#include <string>

#include "host/Commands.h"

namespace CLI {
class App;
class Validator;
}  // namespace CLI

/// Accepts every text but the empty one, which a script passes whose variable is not set.
CLI::Validator Path();

/// Accepts whole numbers from `least` to `most`.
CLI::Validator Between(int least, int most);

/// The options of every command that reads a product.
void AddProductOptions(CLI::App& command, Options& options);

/// What the command line asks for.
struct Request {
  Options options;
  ExitStatus (*run)(const Options& options, HostContext& context) = nullptr;
};

/// Reads the command line. None when that was all there is to do, or wrong: help, the version or
/// one sentence has then been written, and `status` is what the program ends with.
std::optional<Request> ReadCommandLine(HostContext& context, ExitStatus& status);
