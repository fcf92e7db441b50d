#include "workbench/check/DeclaredDependencies.h"

#include "workbench/check/Words.h"

std::map<std::string, Place> DeclaredDependencies(const CheckedProduct& product,
                                                  const std::string& id) {
  std::map<std::string, Place> places;
  const Description* description = product.Kept(id);
  if (description == nullptr) return places;
  for (const Dependency& on : description->dependencies) {
    if (on.node == nullptr || !on.OrdersTheStart()) continue;
    places.emplace(on.id, PlaceOf(*description->file, *on.node, "ID"));
  }
  return places;
}
