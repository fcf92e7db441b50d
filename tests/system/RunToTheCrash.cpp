#include "tests/system/RunToTheCrash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "reference/os/LocalText.h"
#include "workbench/record/FlightRecord.h"

using nlohmann::json;
using testing::HasSubstr;

namespace {

json LastLine(const std::filesystem::path& file) {
  std::ifstream record(file, std::ios::binary);
  std::string last;
  for (std::string line; std::getline(record, line);) last = line;
  return json::parse(last);
}

}  // namespace

MadeProduct& AddAmongOthers(MadeProduct& product, const std::string& fixture) {
  return product.Plugin("a.server").Plugin("bad.server", fixture).Plugin("z.server");
}

HubResult RunToTheCrash(const std::string& fixture, const std::string& sentence) {
  MadeProduct product;
  AddAmongOthers(product, fixture);
  HubSettings settings;
  settings.record = product.Site().Path("run.jsonl");
  const std::string record = LocalFromPath(settings.record);
  const HubResult result = product.RunUntilUp("", settings);
  EXPECT_THAT(result.errors, HasSubstr("HUB: the process ends: " + sentence));
  EXPECT_THAT(result.errors, HasSubstr("HUB: the record of this run: " + record + "\n"));
  EXPECT_THAT(result.errors, HasSubstr("\n#0 "));
  const json last = LastLine(settings.record);
  EXPECT_EQ("crash", last.value("event", "")) << last;
  EXPECT_EQ("bad.server", last.value("plugin", "")) << last;
  EXPECT_EQ(0U, ReadFlightRecord(settings.record).unreadableLines);
  EXPECT_THAT(last.value("text", ""), HasSubstr(sentence));
  return result;
}
