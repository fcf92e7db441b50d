#include <chrono>
#include <thread>

#include "sdk/plugin/TevPlugin.h"

namespace {

void TakeTime() {
  std::this_thread::sleep_for(std::chrono::milliseconds(TEV_MILLISECONDS));
}

}  // namespace

bool Init() {
  TakeTime();
  return true;
}

bool UnInit() {
  TakeTime();
  return true;
}
