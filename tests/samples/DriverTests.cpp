// The sample product's drivers, loaded as a platform would load them.

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "tests/samples/SamplePlugin.h"

namespace {

using testing::ElementsAre;

/// A driver that is up, by its ID.
class Driver {
 public:
  explicit Driver(const std::string& id)
      : m_plugin(id), m_service(std::static_pointer_cast<DriverService>(board::FindService(id))) {}

  std::string Decode(const std::string& frame) const { return m_service->Decode(frame); }

  const std::vector<std::string>& Logged() const { return m_plugin.Logged(); }

 private:
  const SamplePlugin m_plugin;
  const std::shared_ptr<DriverService> m_service;
};

TEST(CameraDriver, DecodesTheTemperature) {
  const Driver driver("camera.driver");
  EXPECT_THAT(
      driver.Logged(),
      ElementsAre("3 [camera.driver] decodes the temperature in the cameras' status frames"));
  EXPECT_EQ("-1.0", driver.Decode({'\xCA', 1, 0, 2, '\xFF', '\xF6'}));
  EXPECT_EQ("25.6", driver.Decode({'\xCA', 1, 0, 2, 1, 0}));
  EXPECT_EQ("", driver.Decode({'\xCA', 1, 0, 3, 1, 0}));
  EXPECT_EQ("", driver.Decode({'\xCA', 2}));
}

TEST(DoorDriver, DecodesTheStateOfASoundMessage) {
  const Driver driver("door.driver");
  EXPECT_THAT(driver.Logged(),
              ElementsAre("3 [door.driver] decodes the state in the doors' messages"));
  EXPECT_EQ("open", driver.Decode("#7;open;48"));
  EXPECT_EQ("", driver.Decode("#7;open;99"));
  EXPECT_EQ("", driver.Decode("7;open;48"));
}

TEST(GateDriver, DecodesWhichWayACarHasPassed) {
  const Driver driver("gate.driver");
  EXPECT_THAT(driver.Logged(),
              ElementsAre("3 [gate.driver] decodes which way a car passes the gate"));
  EXPECT_EQ("in", driver.Decode("A AB B"));
  EXPECT_EQ("out", driver.Decode("B AB A"));
  EXPECT_EQ("", driver.Decode("A AB A"));
}

TEST(SensorDriver, DecodesTheTextOfAWholeFrame) {
  const Driver driver("sensor.driver");
  EXPECT_THAT(driver.Logged(),
              ElementsAre("3 [sensor.driver] decodes the texts in the sensors' frames"));
  EXPECT_EQ("smoke", driver.Decode("\xC0smoke\xC0"));
  EXPECT_EQ("\xC0\xDB", driver.Decode("\xC0\xDB\xDC\xDB\xDD\xC0"));
  EXPECT_EQ("", driver.Decode("\xC0\xDB\x07\xC0"));
  EXPECT_EQ("", driver.Decode("\xC0\xDB\xC0"));
  EXPECT_EQ("", driver.Decode("\xC0smoke"));
}

}  // namespace
