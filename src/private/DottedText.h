#pragma once

#include <string>

/// The part of a dotted identity before its first "."; empty when there is no ".".
std::string GroupNameOf(const std::string& id);

/// The first three non-empty parts of a dotted version, joined by "."; empty when there are fewer.
std::string ShortVersionOf(const std::string& version);
