#pragma once

#include <string>
#include <vector>

#include "workbench/check/Baseline.h"
#include "workbench/check/CheckedProduct.h"

/// What the frame made of a product.
enum class FrameAnswer {
  kRead,     // it hands the product's model over
  kRefused,  // nothing starts
  kNotAsked  // the product IsSlowForFrame
};

/// A plugin, program, driver or sub platform that an upgrade brings, removes or changes.
struct PluginChange {
  std::string id;
  std::string kind;      // "plugin", "program", "driver" or "sub platform"
  std::string before;    // its version, "2.7.1", or "1.4.0 of the addon Parking"; empty: it is new
  std::string after;     // the same afterwards; empty: it is gone
  bool isLower = false;  // by numbers the version afterwards is lower
};

/// A wait that an upgrade brings or removes, between plugins that both are there before and after.
struct OrderChange {
  std::string plugin;
  std::string other;   // that it waits for
  bool isNew = false;  // otherwise it no longer waits
};

/// What changes from one product to another one. Plain value.
struct ProductChanges {
  std::string folder;         // of the product before, as it is shown
  std::string productBefore;  // "NVX 2.7.0"
  std::string productAfter;
  FrameAnswer frameBefore = FrameAnswer::kRead;
  FrameAnswer frameAfter = FrameAnswer::kRead;

  // All empty unless the frame read both products.
  std::vector<PluginChange> plugins;  // by ID
  std::vector<OrderChange> order;     // by plugin, then by the other
  Baseline mended;                    // findings of before that are gone

  /// Whether the frame read both products, so that the changes are known.
  bool AreKnown() const {
    return frameBefore == FrameAnswer::kRead && frameAfter == FrameAnswer::kRead;
  }
};

/// Compares the plugins and the order of two products; `mended` stays empty.
ProductChanges CompareProducts(const CheckedProduct& before, const CheckedProduct& after);

/// The changes as lines of text; "nothing changes" when there are none.
std::string ChangesText(const ProductChanges& changes);
