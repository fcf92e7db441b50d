#include "sdk/base/log.h"
#include "sdk/plugin/TevPlugin.h"

constexpr int kProgress = 3;

bool Init() {
  IKPXFormatLog(kProgress, "hello.server", "hello");
  return true;
}

bool UnInit() {
  IKPXFormatLog(kProgress, "hello.server", "goodbye");
  return true;
}
