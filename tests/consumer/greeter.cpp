#include <sdk/base/log.h>
#include <sdk/plugin/TevPlugin.h>

#include <iostream>

#include "Host.h"

bool Init() {
  IKPXFormatLog(3, "greeter", "up");
  PluginIsUp("greeter.server");
  return true;
}

bool UnInit() {
  std::cout << "greeter.server is down" << std::endl;
  return true;
}
