#include "reference/base/TaskObservation.h"

#include <mutex>
#include <shared_mutex>
#include <utility>

namespace {

/// Never destroyed: pool threads may outlive main.
struct Observation {
  std::shared_mutex mutex;
  TaskObserver observer;  // guarded by mutex
};

Observation& TheObservation() {
  static Observation& observation = *new Observation;
  return observation;
}

}  // namespace

void ObserveTask(const TaskEvent& event) noexcept try {
  Observation& observation = TheObservation();
  const std::shared_lock<std::shared_mutex> lock(observation.mutex);
  if (observation.observer) observation.observer(event);
} catch (...) {
  // The task must run even if the observer throws.
}

void SetTaskObserver(TaskObserver observer) {
  Observation& observation = TheObservation();
  const std::unique_lock<std::shared_mutex> lock(observation.mutex);
  observation.observer = std::move(observer);
}
