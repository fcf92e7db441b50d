#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"

namespace CLI {
class App;
class Validator;
}  // namespace CLI

/// Accepts any text but an empty one: a script passes that when its variable is not set.
CLI::Validator Path();

/// Accepts whole numbers from `least` to `most`.
CLI::Validator Between(int least, int most);

/// Accepts a finite number of seconds, zero or more.
CLI::Validator Seconds();

/// Accepts one of `words`.
CLI::Validator OneOf(const std::vector<std::string>& words);

/// The options of every command that reads a product.
void AddProductOptions(CLI::App& command, Options& options);

/// The options of every command that reads a recorded run, and those of the product.
void AddRunsOptions(CLI::App& command, Options& options, RunsOptions& runs);

/// The options of every command that keeps the frame's log.
void AddLogOptions(CLI::App& command, Options& options);

/// --workers.
void AddWorkersOption(CLI::App& command, Options& options, const std::string& group);

/// --color.
void AddColorOption(CLI::App& command, Options& options, const std::string& group);

/// What the command line asks for.
struct Request {
  Options options;
  ExitStatus (*run)(const Options& options, HostContext& context) = nullptr;
};

/// Parses the command line. Returns nothing when the program has only to end with `status`: help,
/// the version, or one sentence on what is wrong with the command line has been written.
std::optional<Request> ReadCommandLine(HostContext& context, ExitStatus& status);
