#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "reference/os/SystemFile.h"

/// A text of limited length, built without heap, lock or locale, for the report of a crash. Text
/// that does not fit is dropped. Async-signal-safe.
class CrashText {
 public:
  CrashText& Add(std::string_view text) noexcept;

  /// Bytes below 0x20 and 0x7f become \xNN, so that the text stays one line.
  CrashText& AddEscaped(std::string_view text) noexcept;

  CrashText& AddNumber(std::int64_t number) noexcept;
  CrashText& AddHex(std::uint64_t number) noexcept;  // with 0x

  std::string_view View() const noexcept { return {m_text, m_size}; }
  const char* CStr() const noexcept { return m_text; }

 private:
  static constexpr std::size_t kLongest = 2047;

  std::size_t m_size = 0;
  char m_text[kLongest + 1] = {};  // always zero-terminated
};

/// Writes all of `text`. False when that fails or the reader has not read for two seconds; a crash
/// report must not wait for ever. See WriteWhole.
bool WriteCrashText(SystemFile file, std::string_view text) noexcept;
