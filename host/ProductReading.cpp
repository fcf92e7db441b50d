#include "host/ProductReading.h"

#include <new>

#include "host/ParserMessages.h"
#include "host/PluginHeads.h"
#include "reference/os/LocalText.h"
#include "sdk/base/path.h"

namespace {

Finding Error(const std::string& text) {
  return {Severity::kError, text};
}

}  // namespace

std::int32_t InitialiseFrame(const FrameLibrary& frame) {
  const ParserMessages messages;
  return frame.Init();
}

ProductName NameOfProduct() {
  try {
    return ReadProductName(PathFromLocal(GetCurExeDir()), SystemNames());
  } catch (const std::bad_alloc&) {
    return {};
  }
}

std::optional<Finding> FindingOf(const FrameEvent& note) {
  switch (note.kind) {
    case FrameEvent::Kind::kLpcStopFailed:
      return Error(
          "the local-procedure-call framework did not stop; the plugins were neither "
          "stopped nor freed");
    case FrameEvent::Kind::kNoPoolForStop:
      return Error(
          "there were no threads for the stop; the plugins were neither stopped nor freed");
    case FrameEvent::Kind::kStepThrewNoException:
      return Error("a step of the frame ended with something that is no exception object");
    case FrameEvent::Kind::kStepThrew:
      return Error("a step of the frame ended with an exception: " + note.reason);
    default:
      return std::nullopt;
  }
}

std::string FrameReason(const std::vector<FrameEvent>& notes) {
  std::string words = "Frame_Init failed and logged no reason";
  for (const FrameEvent& note : notes) {
    if (note.kind == FrameEvent::Kind::kStepThrew) {
      return "Frame_Init ended with an exception: " + note.reason;
    }
    if (note.kind == FrameEvent::Kind::kStepThrewNoException) {
      return "Frame_Init threw something that is no exception object";
    }
    if (note.kind == FrameEvent::Kind::kPlatformInitFailed) return "the platform did not come up";
    if (!note.reason.empty()) words = "the frame refused the product: " + note.reason;
  }
  return words;
}

std::optional<std::string> StartFailure(const std::vector<FrameEvent>& notes) {
  for (const FrameEvent& note : notes) {
    if (note.kind == FrameEvent::Kind::kNoPoolForStart) return "there are no threads for them";
    if (note.kind == FrameEvent::Kind::kStepThrew) return note.reason;
    if (note.kind == FrameEvent::Kind::kStepThrewNoException) {
      return "a step threw something that is no exception object";
    }
  }
  return std::nullopt;
}
