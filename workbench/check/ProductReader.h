#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/product/LocalNames.h"

/// Where a product lies.
struct ProductPlace {
  std::filesystem::path folder;  // of Product.xml
  std::string bin;               // the name of the folder of the executables, in `folder`
};

/// The place of the product whose executables are in `bin`; none when `bin` is no folder. Links in
/// `bin` are followed first, since the frame asks the system for "bin/../Product.xml".
std::optional<ProductPlace> FindProduct(const std::filesystem::path& bin, const LocalNames& names);

/// Whether the product perhaps HoldsUpFrame: an answer in less time than reading it takes.
bool MayHoldUpFrame(const ProductPlace& place, const LocalNames& names);

/// Reads the model files of a product as they lie on disk, all that the frame would ask for if
/// none were missing, and derives the model from them. Takes time and memory in proportion to the
/// files. Throws only std::bad_alloc.
std::unique_ptr<CheckedProduct> ReadCheckedProduct(const ProductPlace& place,
                                                   const LocalNames& names,
                                                   std::int32_t runningModule);

/// What the frame handed over to the platform.
struct HandedOver {
  ProductModel model;
  std::vector<AddonModel> addons;
  std::vector<ToolModel> tools;
};

/// Replaces the derived model by the frame's.
void UseModel(CheckedProduct& product, HandedOver handedOver);
