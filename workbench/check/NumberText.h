#pragma once

#include <string>

// Numbers as the frame reads them, by atoi.

/// `text` without blanks and line breaks at its ends.
std::string WithoutBlanks(const std::string& text);

/// Whether `text` is nothing but a whole number, perhaps with a sign.
bool IsNumber(const std::string& text);

/// Whether the frame reads `text` as the number that it looks like: a whole number of 32 bits,
/// perhaps with blanks around it.
bool IsPlainNumber(const std::string& text);

/// Whether the number at the beginning of `text` is none of 32 bits.
bool ExceedsInt(const std::string& text);
