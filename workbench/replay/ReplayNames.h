#pragma once

#include <string>
#include <vector>

/// Whether an ID can name the files of a plugin on every system: ASCII letters, digits, "-", "_"
/// and single dots inside, at most 100 of them; no device of Windows ("nul"), and none that another
/// file of a product could have.
bool IsPortableID(const std::string& id);

/// The IDs that plugins have in a replayed product, all different also without regard to case.
///
/// A portable ID stays; every other one, and one that equals an earlier one but for its case,
/// becomes "stub-N", where N is its position, from 1. `anonymous`: all become "plugin-N".
std::vector<std::string> ReplayNames(const std::vector<std::string>& ids, bool anonymous);
