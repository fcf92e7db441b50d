#pragma once

#include <functional>
#include <string>
#include <utility>

#include "sdk/base/thread.h"

namespace PluginFrame {

/// The name of the pool on which plugins start and stop.
constexpr char kThreadPool[] = "platform.PluginFrame";

/// The task that starts or stops one plugin: calls `work` with the plugin's name.
class CPluginFrameTask : public CTMTask {
 public:
  using Work = std::function<void(const std::string&)>;

  CPluginFrameTask(std::string name, Work work)
      : CTMTask(kThreadPool), m_name(std::move(name)), m_work(std::move(work)) {}

  void DoTask() override { m_work(m_name); }

 private:
  const std::string m_name;
  const Work m_work;
};

}  // namespace PluginFrame
