// map.server: the map of the sites, kept in storage, and which of them lies nearest to a point.

#include <cmath>
#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

struct Site {
  std::string name;
  double latitude = 0;  // degrees
  double longitude = 0;
};

/// Great-circle distance in kilometres.
double Distance(double latitude, double longitude, const Site& site) {
  constexpr double radians = 3.14159265358979 / 180;
  const double y = std::sin((site.latitude - latitude) * radians / 2);
  const double x = std::sin((site.longitude - longitude) * radians / 2);
  const double h = y * y + std::cos(latitude * radians) * std::cos(site.latitude * radians) * x * x;
  return 2 * 6371 * std::asin(std::sqrt(h));
}

class Map : public MapService {
 public:
  /// Takes lines of "name latitude longitude".
  explicit Map(const std::string& text) {
    std::istringstream words(text);
    for (Site site; words >> site.name >> site.latitude >> site.longitude;) {
      m_sites.push_back(site);
    }
  }

  std::string Nearest(double latitude, double longitude) const override {
    const Site* nearest = nullptr;
    for (const Site& site : m_sites) {
      if (nearest == nullptr ||
          Distance(latitude, longitude, site) < Distance(latitude, longitude, *nearest)) {
        nearest = &site;
      }
    }
    return nearest == nullptr ? std::string() : nearest->name;
  }

 private:
  std::vector<Site> m_sites;
};

}  // namespace

bool Init() {
  const auto storage = board::Find<StorageService>();
  if (!storage) return false;
  storage->Put("sites", "gate 53.54 9.98\nquay 53.53 9.90\nhall 53.60 10.10\n");
  const auto map = std::make_shared<Map>(storage->Get("sites"));
  board::Publish<MapService>(map);
  return map->Nearest(53.55, 10.0) == "gate" && map->Nearest(53.5, 9.8) == "quay";
}

bool UnInit() {
  board::Withdraw(MapService::kName);
  return true;
}
