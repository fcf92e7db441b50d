#pragma once

/// Writes one line to the product's log.
///
/// In: `level` (3 progress, 4 a tolerated failure, 5 a failure of one plugin or entry, 6 a failure
/// that stops the frame), the `module` that logs, a printf format and its arguments. The text may
/// have any length. Any thread. Never throws; a line that cannot be written is lost silently.
[[gnu::format(printf, 3, 4)]] void IKPXFormatLog(int level, const char* module, const char* format,
                                                 ...) noexcept;
