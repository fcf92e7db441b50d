#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// A text without heap, which is cut to its place: for what a crash handler reads, and for what a
/// thread has of its own. A thread that ends with its process must have nothing to destroy: Windows
/// may stop it in the middle, with the locks that it holds.
class FixedText {
 public:
  void Set(std::string_view text) { m_size = text.copy(m_text.data(), m_text.size()); }
  std::string_view View() const { return {m_text.data(), m_size}; }

 private:
  std::size_t m_size = 0;
  std::array<char, 1024> m_text{};
};
