#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/EarlyCheck.h"
#include "host/FrameLibrary.h"
#include "host/ProductCheck.h"
#include "host/ProductReading.h"
#include "host/RecordJson.h"
#include "host/RunMonitor.h"
#include "host/UnlessStopped.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/lpc/LpcRecord.h"
#include "reference/os/LocalText.h"
#include "sdk/base/path.h"
#include "workbench/output/Text.h"

namespace {

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

/// What the frame made of the product.
struct Reading {
  std::int32_t result = -1;
  std::string model;                   // as JSON
  std::vector<std::string> sentences;  // what is wrong with the product
};

/// Initialises the frame, copies the models that it passed to the platform, and un-initialises it.
/// Nothing was started, so Frame_Stop is not called.
Reading Read(const FrameLibrary& frame, const RunMonitor& monitor, std::int32_t module) {
  Reading reading;
  EarlyCheck check(PathFromLocal(GetCurExeDir()), module);
  reading.result = InitialiseFrame(frame);
  const PlatformRecord platform = SnapshotPlatform();
  const Json model = {{"Frame_Init", reading.result},
                      {"ProductModel", OrNull(platform.productModel)},
                      {"Addons", OrNull(platform.addons)},
                      {"Tools", OrNull(platform.tools)},
                      {"PluginsInfo", OrNull(platform.plugins)},
                      {"PlatformInfo", OrNull(SnapshotLpc().info)}};
  reading.model = model.dump(2, ' ', false, Json::error_handler_t::replace);
  if (reading.result != 0) {
    check.Continue(std::nullopt);
    reading.sentences = check.Wait().refusals;
    if (reading.sentences.empty()) reading.sentences.push_back(FrameReason(monitor.Notes()));
  } else {
    frame.UnInit();
    check.Continue(HandedOverOf(platform));
    for (Finding& finding : check.Wait().findings) {
      reading.sentences.push_back(std::move(finding.text));
    }
  }
  reading.sentences = FirstSentences(reading.sentences, GetCurExeDir());
  return reading;
}

void AddOptions(CLI::App& command, Options& options) {
  AddProductOptions(command, options);
  AddLogOptions(command, options);
}

ExitStatus Run(const Options& options, HostContext& context) {
  const RunMonitor monitor({});
  const FrameLibrary frame(FrameLibrary::PathBesideProgram());
  Reading reading;
  ReadUnlessStopped(context, [&] { reading = Read(frame, monitor, options.module); });
  context.output.Write(reading.model + "\n");
  for (const std::string& sentence : reading.sentences) {
    context.output.WriteError(Escaped(sentence));
  }
  context.output.Flush();
  if (!context.output.Error().empty()) {
    context.output.WriteError("standard output cannot be written: " + context.output.Error());
    return kFrameFailed;
  }
  return reading.result == 0 ? kOk : kFrameFailed;
}

}  // namespace

Command ModelCommand() {
  return {"model", "Print what the frame hands over, as one JSON object", &AddOptions, &Run};
}
