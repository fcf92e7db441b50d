#include "reference/base/TaskObservation.h"

#include <functional>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace {

/// Never destroyed: pool threads may outlive main.
struct Observation {
  std::shared_mutex mutex;

  // Guarded by mutex.
  TaskObserver observer;
  std::function<void()> idleObserver;
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

void ObserveIdle() noexcept try {
  Observation& observation = TheObservation();
  const std::shared_lock<std::shared_mutex> lock(observation.mutex);
  if (observation.idleObserver) observation.idleObserver();
} catch (...) {
  // The pool's thread must go on even if the observer throws.
}

void SetTaskObserver(TaskObserver observer) {
  Observation& observation = TheObservation();
  const std::unique_lock<std::shared_mutex> lock(observation.mutex);
  observation.observer = std::move(observer);
}

void SetIdleObserver(std::function<void()> observer) {
  Observation& observation = TheObservation();
  const std::unique_lock<std::shared_mutex> lock(observation.mutex);
  observation.idleObserver = std::move(observer);
}
