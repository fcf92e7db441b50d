// report.server: the day's figures. Without a licence, which it depends on softly, it leaves the
// licensed part out.

#include <algorithm>
#include <numeric>
#include <vector>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

struct Figures {
  double mean = 0;
  int median = 0;
  int worst = 0;
};

Figures Summary(std::vector<int> perHour) {
  std::sort(perHour.begin(), perHour.end());
  Figures figures;
  figures.mean =
      std::accumulate(perHour.begin(), perHour.end(), 0.0) / static_cast<double>(perHour.size());
  figures.median = perHour[perHour.size() / 2];
  figures.worst = perHour.back();
  return figures;
}

}  // namespace

bool Init() {
  const auto alarms = board::Find<AlarmService>();
  if (!alarms) return false;
  const Figures figures = Summary({3, 1, 2, 9, 0});
  return figures.mean == 3 && figures.median == 2 && figures.worst == 9;
}

bool UnInit() {
  return true;
}
