#include "workbench/report/ResultName.h"

const char* ResultName(PluginSpan::Result result) {
  using Result = PluginSpan::Result;
  switch (result) {
    case Result::kNotBegun:
      return "not-begun";
    case Result::kNotReturned:
      return "not-returned";
    case Result::kOk:
      return "ok";
    case Result::kFailed:
      return "failed";
    case Result::kNotLoaded:
      return "not-loaded";
    case Result::kRefused:
      return "refused";
    case Result::kNothingToStop:
      return "nothing-to-stop";
    case Result::kNotKnown:
      return "not-known";
  }
  return "";
}
