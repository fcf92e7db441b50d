// HUB, the host program: loads the frame as a site's host does and shows what happens in a run.

#include <exception>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "host/CommandLine.h"
#include "host/CrashReport.h"
#include "host/ProductFolder.h"
#include "reference/base/Log.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/os/Threads.h"

namespace {

void SetUpLog(const Options& options) {
  LogConfig log;
  log.consoleLevel = 0;
  log.file = options.log;
  log.fileLevel = options.logLevel;
  log.maxFileBytes = options.logSize << 20U;
  log.maxFiles = options.logFiles;
  try {
    ConfigureLog(log);
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}

ExitStatus Main(HostContext& context) {
  ExitStatus status = kOk;
  const std::optional<Request> request = ReadCommandLine(context, status);
  if (!request) {
    context.output.Flush();
    if (context.output.Error().empty()) return status;
    context.output.WriteError("standard output cannot be written: " + context.output.Error());
    return kFrameFailed;
  }
  SetUpLog(request->options);
  UseProductFolder(request->options.bin);
  SetRunningModule(request->options.module);
  return request->run(request->options, context);
}

int Hub(HostContext& context) {
  NameThread("run");
  PrepareWorkerThread();
  int status = kFrameFailed;
  try {
    status = Main(context);
  } catch (const UsageError& error) {
    status = kUsage;
    context.output.WriteError(error.what());
  } catch (const std::exception& error) {
    context.output.WriteError(error.what());
  }
  context.output.Flush();
  AnnounceExit();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Output& output = *new Output;
    StopSignal stop;
    SuppressErrorDialogs();
    InstallCrashReport();
    HostContext context{stop, output, std::vector<std::string>(argv, argv + argc)};
    // The system delivers the process's signals to this thread, so that the thread `run` can still
    // write how the run ended.
    int status = kFrameFailed;
    std::thread([&] { status = Hub(context); }).join();
    return status;
  } catch (const std::exception& error) {
    std::cerr << "HUB: " << error.what() << std::endl;  // Output may not have been created
    return kFrameFailed;
  }
}
