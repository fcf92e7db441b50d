// map.server: the map of the sites, from a table of the storage: which lies nearest to a point?

#include <algorithm>
#include <cmath>
#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "map.server";

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
  explicit Map(std::vector<Site> sites) : m_sites(std::move(sites)) {}

  std::string Nearest(double latitude, double longitude) const override {
    const auto nearest = std::min_element(
        m_sites.begin(), m_sites.end(), [latitude, longitude](const Site& one, const Site& other) {
          return Distance(latitude, longitude, one) < Distance(latitude, longitude, other);
        });
    return nearest == m_sites.end() ? std::string() : nearest->name;
  }

 private:
  const std::vector<Site> m_sites;
};

}  // namespace

bool Init() {
  const auto storage = board::Need<StorageService>(kPlugin);
  if (!storage) return false;
  std::vector<Site> sites;
  std::istringstream words(storage->Table("sites"));
  for (Site site; words >> site.name >> site.latitude >> site.longitude;) sites.push_back(site);
  IKPXFormatLog(board::kProgress, kPlugin, "%s sites", std::to_string(sites.size()).c_str());
  board::Publish<MapService>(std::make_shared<Map>(std::move(sites)));
  return true;
}

bool UnInit() {
  board::Withdraw(MapService::kName);
  return true;
}
