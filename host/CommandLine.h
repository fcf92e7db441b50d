#pragma once

#include <optional>
#include <string>

#include "host/Commands.h"

namespace CLI {
class App;
class Validator;
}  // namespace CLI

/// Accepts any text but an empty one: a script passes that when its variable is not set.
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

/// Parses the command line. Returns nothing when the program has only to end with `status`: help,
/// the version, or one sentence on what is wrong with the command line has been written.
std::optional<Request> ReadCommandLine(HostContext& context, ExitStatus& status);
