// map.server: the map of the sites, and which of them lies nearest to a point.

#include <cmath>
#include <string>
#include <vector>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

struct Site {
  std::string name;
  double latitude;  // degrees
  double longitude;
};

/// Great-circle distance in kilometres.
double Distance(double latitude, double longitude, const Site& site) {
  constexpr double radians = 3.14159265358979 / 180;
  const double y = std::sin((site.latitude - latitude) * radians / 2);
  const double x = std::sin((site.longitude - longitude) * radians / 2);
  const double h = y * y + std::cos(latitude * radians) * std::cos(site.latitude * radians) * x * x;
  return 2 * 6371 * std::asin(std::sqrt(h));
}

const Site* Nearest(const std::vector<Site>& sites, double latitude, double longitude) {
  const Site* nearest = nullptr;
  for (const Site& site : sites) {
    if (nearest == nullptr ||
        Distance(latitude, longitude, site) < Distance(latitude, longitude, *nearest)) {
      nearest = &site;
    }
  }
  return nearest;
}

std::vector<Site> g_sites;

}  // namespace

bool Init() {
  const auto storage = board::Find<StorageService>();
  if (!storage) return false;
  g_sites = {{"gate", 53.54, 9.98}, {"quay", 53.53, 9.90}, {"depot", 53.60, 10.10}};
  const Site* nearest = Nearest(g_sites, 53.55, 10.0);
  return nearest != nullptr && nearest->name == "gate";
}

bool UnInit() {
  g_sites.clear();
  return true;
}
