// The sample product's drivers, loaded as a platform would load them.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/os/os.h"

namespace {

/// A driver that is up, by its ID.
class Driver {
 public:
  explicit Driver(const std::wstring& id)
      : m_library(LoadLibraryW((L"" TEV_SITE "/bin/" + id + L".dll").c_str())) {
    EXPECT_TRUE(Call("Init"));
    m_service = std::static_pointer_cast<DriverService>(
        board::FindService(std::string(id.begin(), id.end())));
  }
  ~Driver() {
    m_service.reset();
    EXPECT_TRUE(Call("UnInit"));
    EXPECT_NE(0, FreeLibrary(m_library));
  }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  std::string Decode(const std::string& frame) const { return m_service->Decode(frame); }

 private:
  bool Call(const char* entry) {
    return reinterpret_cast<bool (*)()>(GetProcAddress(m_library, entry))();
  }

  HMODULE m_library;
  std::shared_ptr<DriverService> m_service;
};

TEST(CameraDriver, DecodesTheTemperature) {
  const Driver driver(L"camera.driver");
  EXPECT_EQ("-1.0", driver.Decode({'\xCA', 1, 0, 2, '\xFF', '\xF6'}));
  EXPECT_EQ("25.6", driver.Decode({'\xCA', 1, 0, 2, 1, 0}));
  EXPECT_EQ("", driver.Decode({'\xCA', 1, 0, 3, 1, 0}));
  EXPECT_EQ("", driver.Decode({'\xCA', 2}));
}

TEST(DoorDriver, DecodesTheStateOfASoundMessage) {
  const Driver driver(L"door.driver");
  EXPECT_EQ("open", driver.Decode("#7;open;48"));
  EXPECT_EQ("", driver.Decode("#7;open;99"));
  EXPECT_EQ("", driver.Decode("7;open;48"));
}

TEST(GateDriver, DecodesWhichWayACarHasPassed) {
  const Driver driver(L"gate.driver");
  EXPECT_EQ("in", driver.Decode("A AB B"));
  EXPECT_EQ("out", driver.Decode("B AB A"));
  EXPECT_EQ("", driver.Decode("A AB A"));
}

TEST(SensorDriver, DecodesTheTextOfAWholeFrame) {
  const Driver driver(L"sensor.driver");
  EXPECT_EQ("smoke", driver.Decode("\xC0smoke\xC0"));
  EXPECT_EQ("\xC0\xDB", driver.Decode("\xC0\xDB\xDC\xDB\xDD\xC0"));
  EXPECT_EQ("", driver.Decode("\xC0\xDB\x07\xC0"));
  EXPECT_EQ("", driver.Decode("\xC0\xDB\xC0"));
  EXPECT_EQ("", driver.Decode("\xC0smoke"));
}

}  // namespace
