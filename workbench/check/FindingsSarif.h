#pragma once

#include <string>

#include "workbench/check/CheckReport.h"

/// A SARIF 2.1.0 log, as schemas/sarif.schema.json has it: all rules that ran, a result for each
/// finding, and with a baseline also one for each key of it that is no longer found.
///
/// Files are relative to the base PRODUCT, the product's folder; those that lie elsewhere have an
/// absolute URI.
std::string FindingsSarif(const CheckReport& report);

/// The URI of a folder that ends in "/". `folder`: absolute, with "/" between names; "C:/site" and
/// "//server/share/site" too.
std::string FolderUri(const std::string& folder);
