// Start and stop order over random graphs, with tasks run in random order.

#include <algorithm>
#include <random>
#include <set>

#include "src/PluginFrame/PluginManager.h"
#include "tests/support/FrameTest.h"

using PluginFrame::CPluginManager;

namespace {

class StartOrder : public FrameTest {
 protected:
  /// Starts and stops a product of `count` plugins, each depending on a few before it. Returns what
  /// was out of order.
  std::string Run(unsigned seed, int count) {
    std::mt19937 random(seed);
    std::vector<std::vector<int>> needs(static_cast<std::size_t>(count));
    std::string words;
    std::set<int> up;
    std::set<int> gone;
    std::string faults;
    for (int i = 0; i < count; ++i) {
      words += "p" + std::to_string(i) + ":";
      for (int k = 0; i > 0 && k < static_cast<int>(random() % 4); ++k) {
        needs[static_cast<std::size_t>(i)].push_back(static_cast<int>(random() % unsigned(i)));
        words += "p" + std::to_string(needs[static_cast<std::size_t>(i)].back()) + ",";
      }
      if (words.back() == ',') words.pop_back();
      words += " ";
    }
    tree.Product(words);
    for (int i = 0; i < count; ++i) {
      const bool succeeds = random() % 5 != 0;
      ScriptedLibrary& library = seam.libraries["p" + std::to_string(i)];
      library.init = [&, i, succeeds] {
        for (const int need : needs[static_cast<std::size_t>(i)]) {
          if (up.count(need) == 0) faults += "early init " + std::to_string(i) + " ";
        }
        if (!up.insert(i).second) faults += "second init " + std::to_string(i) + " ";
        return succeeds;
      };
      library.uninit = [&, i] {
        for (int other = 0; other < count; ++other) {
          const auto& list = needs[static_cast<std::size_t>(other)];
          if (std::find(list.begin(), list.end(), i) != list.end() && gone.count(other) == 0) {
            faults += "early uninit " + std::to_string(i) + " ";
          }
        }
        if (!gone.insert(i).second) faults += "second uninit " + std::to_string(i) + " ";
        return true;
      };
    }
    seam.onSleep = [&] {
      std::shuffle(seam.tasks.begin(), seam.tasks.end(), random);
      const std::size_t some = seam.tasks.empty() ? 0 : random() % seam.tasks.size() + 1;
      const std::vector<std::shared_ptr<CTMTask>> now(seam.tasks.begin(),
                                                      seam.tasks.begin() + long(some));
      seam.tasks.erase(seam.tasks.begin(), seam.tasks.begin() + long(some));
      seam.Run(now);
    };
    CPluginManager manager;
    if (!manager.Init() || !manager.Start(nullptr)) faults += "no start ";
    manager.Uninit();
    if (static_cast<int>(up.size()) != count) faults += "not all started ";
    if (static_cast<int>(gone.size()) != count) faults += "not all stopped ";
    return faults;
  }
};

TEST_F(StartOrder, HoldsForRandomGraphs) {
  for (unsigned seed = 1; seed <= 150; ++seed) {
    Log::Instance().Clear();
    EXPECT_EQ("", Run(seed, 1 + static_cast<int>(seed % 30))) << "seed " << seed;
  }
}

TEST_F(StartOrder, HoldsForNineHundredPlugins) {
  EXPECT_EQ("", Run(4711, 900));
}

}  // namespace
