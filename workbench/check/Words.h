#pragma once

#include <string>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/RuleFinding.h"

// Pieces of the messages that rules write.

/// `"a.server"`, with control characters escaped.
std::string Quoted(const std::string& text);

/// "<Plugins>"
std::string Tag(const std::string& element);

/// "a", "a and b", "a, b and c"; after `most` names, "and N more". Each is put in quotation marks.
std::string QuotedList(const std::vector<std::string>& names, std::size_t most = 5);

/// "1 plugin", "2 plugins".
std::string Counted(std::size_t number, const std::string& what);

// Places, for findings.
Place PlaceOf(const CheckedFile& file);
Place PlaceOf(const CheckedFile& file, const XmlNode& node);
Place PlaceOf(const CheckedFile& file, const TextPlace& place);

/// The place of an attribute of `node`; of the element when it does not have the attribute.
Place PlaceOf(const CheckedFile& file, const XmlNode& node, const char* attribute);

/// The place of the first element at `path` below the root; of the root when there is none.
Place PlaceAt(const CheckedFile& file, const char* path);

/// The place of the first element at `path` below `node`; of `node` when there is none.
Place PlaceAt(const CheckedFile& file, const XmlNode& node, const char* path);

/// The place of an entry of a list: of its element, or of the section that hides it.
Place PlaceOf(const PluginEntry& entry);
