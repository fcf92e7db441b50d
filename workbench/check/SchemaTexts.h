#pragma once

#include <cstddef>

// The files in schemas/, compiled into the program by cmake/EmbedSchemas.cmake.

/// A part of a schema's text; the parts of one schema follow each other.
struct SchemaPiece {
  const char* schema;  // the name of its file without ".xsd"
  const char* text;
};

struct SchemaPieces {
  const SchemaPiece* first;
  std::size_t count;
};

extern const SchemaPieces kSchemaPieces;
