#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// A text in a fixed buffer, cut to its size: for what a crash handler reads, and for thread-local
/// texts. Thread-local data must need no destructor here: when the process ends, Windows may stop a
/// thread inside a destructor while it holds a lock.
class FixedText {
 public:
  void Set(std::string_view text) { m_size = text.copy(m_text.data(), m_text.size()); }
  std::string_view View() const { return {m_text.data(), m_size}; }

 private:
  std::size_t m_size = 0;
  std::array<char, 1024> m_text{};
};
