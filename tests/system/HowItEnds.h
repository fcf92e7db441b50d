#pragma once

#include <string>

#include "tests/system/HubProcess.h"

// What the system shows of a process that ended by a crash.

/// Of `bad.server`, in this phase: "in Init".
std::string NullPointerSentence(const std::string& phase);
extern const char* const kAbortSentence;

/// How the stack begins when this function crashed, which its library exports.
std::string StackBegin(const std::string& function);

void ExpectEndedByMemoryFault(const HubResult& result);
void ExpectEndedByAbort(const HubResult& result);
