#pragma once

#include <string>

#include "tests/system/MadeProduct.h"

/// A product in which one plugin of several, bad.server, does what `fixture` does.
MadeProduct& Among(MadeProduct& product, const std::string& fixture);

/// Runs `fixture` among others with these arguments, until it crashes: the sentence on standard
/// error, which the record's last line has too.
HubResult RunToTheCrash(const std::string& fixture, const std::string& sentence,
                        const std::string& arguments = "");
