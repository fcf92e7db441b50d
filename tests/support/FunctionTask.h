#pragma once

#include <functional>
#include <string>
#include <utility>

#include "sdk/base/thread.h"

/// A task that calls a function.
class FunctionTask : public CTMTask {
 public:
  FunctionTask(const std::string& group, std::function<void()> work)
      : CTMTask(group), m_work(std::move(work)) {}
  void DoTask() override { m_work(); }

 private:
  const std::function<void()> m_work;
};
