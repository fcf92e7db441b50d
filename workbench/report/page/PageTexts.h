#pragma once

#include <cstddef>

// The files page.css and page.js, compiled into the program by cmake/EmbedPage.cmake.

/// A file of the page: its text in pieces, and the hash by which a content security policy names
/// it.
struct PageText {
  const char* const* pieces;
  std::size_t count;
  const char* hash;  // "sha256-" and 44 characters of base64
};

extern const PageText kPageStyle;
extern const PageText kPageScript;
