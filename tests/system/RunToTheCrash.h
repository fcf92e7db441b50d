#pragma once

#include <string>

#include "tests/system/MadeProduct.h"

/// Adds the plugin bad.server, whose library is `fixture`, and some other plugins.
MadeProduct& AddAmongOthers(MadeProduct& product, const std::string& fixture);

/// Runs a product with `fixture` among other plugins until it crashes: in the start, or in the
/// stop, which is requested once the product is up. Expects `sentence` on standard error and in the
/// record's last line.
HubResult RunToTheCrash(const std::string& fixture, const std::string& sentence);
