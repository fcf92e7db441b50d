#pragma once

#include "src/model/ProductModel.h"

struct CheckedProduct;

/// The plugins and sub platforms that the frame would start if the descriptions that it cannot read
/// were not listed: without addons, trimmed and sorted as in the frame. For a product that the
/// frame refuses, so that its other faults can be found too.
ProductModel DeriveModel(const CheckedProduct& product);
