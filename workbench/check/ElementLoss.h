#pragma once

#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/ModelGrammar.h"

// What is lost with elements that the frame does not read.

/// How an entry is named in messages: by its ID in quotation marks; empty without one.
std::string EntryName(const XmlNode& entry);

/// "3 plugins are not started": what it means that so many entries of this name are not read.
std::string EntriesLost(FileKind kind, const std::string& entry, std::size_t number);

/// What is lost when `nodes`, each of them meant to be a `meant`, are not read: "the list in it is
/// not read: 15 plugins are not started". `parent` contains the first of them.
std::string LossOf(const CheckedFile& file, const ElementSpec& meant, const XmlNode& parent,
                   const std::vector<const XmlNode*>& nodes);
