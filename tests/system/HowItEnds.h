#pragma once

#include "tests/system/HubProcess.h"

// What the system shows of a process that ended by a crash.

extern const char* const kNullPointerSentence;
extern const char* const kAbortSentence;

void ExpectEndedByMemoryFault(const HubResult& result);
void ExpectEndedByAbort(const HubResult& result);
