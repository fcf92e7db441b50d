#pragma once

#include <string>

#include "tests/system/HubProcess.h"

// What a process that ended by a crash looks like on this system.

/// The crash's sentence for a null pointer in `bad.server`; `phase`: "in Init", for example.
std::string NullPointerSentence(const std::string& phase);
extern const char* const kAbortSentence;

/// The begin of the stack's text when `function`, an exported one, crashed.
std::string StackBegin(const std::string& function);

void ExpectEndedByMemoryFault(const HubResult& result);
void ExpectEndedByAbort(const HubResult& result);
