#pragma once

/// Gives the calling thread an alternate signal stack until it ends; later calls do nothing.
/// Reports no failure: without memory the thread simply has none.
void UseAlternateStack();
