#pragma once

#include <functional>
#include <string>
#include <vector>

#include "workbench/check/Baseline.h"
#include "workbench/check/CheckedProduct.h"

/// What the frame made of a product.
enum class FrameAnswer {
  kRead,     // it hands the product's model over
  kRefused,  // nothing starts
  kNotAsked  // the product HoldsUpFrame
};

/// A plugin, program, driver, sub platform, addon or tool that an upgrade brings, removes or
/// changes.
struct PartChange {
  std::string id;
  std::string kind;       // "plugin", "program", "driver", "sub platform", "addon" or "tool"
  std::string before;     // its version, "2.7.1", or "1.4.0 of the addon Parking"; empty: it is new
  std::string after;      // the same afterwards; empty: it is gone
  bool isLower = false;   // by numbers the version afterwards is lower
  std::string otherKind;  // that it was of before; empty: of the same
  bool otherFile = false;  // only the content of its library or program changes
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
  std::vector<PartChange> addons;   // installed addons and tools, by kind and ID
  std::vector<PartChange> plugins;  // by ID
  std::vector<OrderChange> order;   // by plugin, then by the other
  Baseline mended;                  // findings of before that are gone

  /// Whether the frame read both products, so that the changes are known.
  bool AreKnown() const {
    return frameBefore == FrameAnswer::kRead && frameAfter == FrameAnswer::kRead;
  }
};

/// Whether both products have a file of this name in the folder of the executables, and its content
/// differs.
using DiffersBetween = std::function<bool(const std::string& name)>;

/// Compares two products; `mended` stays empty. `differs` is asked for the library or program of
/// each plugin whose version and kind do not change.
ProductChanges CompareProducts(const CheckedProduct& before, const CheckedProduct& after,
                               const DiffersBetween& differs);

/// The changes as lines of text; a line that says so when there are none. Findings that are gone
/// are mended, unless they were notes or about what is gone itself.
std::string ChangesText(const ProductChanges& changes);
