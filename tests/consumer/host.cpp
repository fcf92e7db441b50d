#include "Host.h"

#include <sdk/frame/PluginFrame.h>

#include <chrono>
#include <cstdint>
#include <future>
#include <iostream>
#include <string>

static_assert(__cplusplus >= 202002L, "compiled by the consumer's standard");

namespace {

std::promise<std::string> g_up;

// With the frame's own warnings, which the consumer has not, this line would be an error.
std::uint8_t CutToAByte(int number) {
  std::uint8_t byte = number;
  return byte;
}

}  // namespace

void PluginIsUp(const char* id) {
  g_up.set_value(id);
}

int main() {
  if (Frame_Init() != 0 || Frame_Start() != 0) return 1;
  std::future<std::string> up = g_up.get_future();
  if (up.wait_for(std::chrono::minutes(1)) != std::future_status::ready) return 2;
  std::cout << up.get() << " is up" << std::endl;
  Frame_Stop();
  Frame_UnInit();
  return CutToAByte(256);
}
