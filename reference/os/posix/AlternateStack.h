#pragma once

/// Gives the calling thread an alternate signal stack until it ends, unless it has one of ours.
/// Never fails: without memory the thread has none.
void UseAlternateStack();
