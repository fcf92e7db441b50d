#pragma once

#include <string>

// Texts of a graph in Graphviz' language. `text` is one that is shown: escaped (output/Text.h), so
// that it holds no byte that is not valid UTF-8. U+FFFE and U+FFFF, which no SVG may hold, become
// \uNNNN.

/// `text` in quotation marks, as a label or tooltip; its line feeds end lines. Nothing else in it
/// has a meaning: not the escapes of labels (\N, \G, \l), not HTML's entities.
std::string DotQuoted(const std::string& text);

/// `text`, which is not empty, in bold type inside an HTML-like label.
std::string DotBold(const std::string& text);
