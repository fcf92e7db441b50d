#include "host/StopLimit.h"

#include <algorithm>

namespace {

constexpr double kStuckSeconds = 5;

}  // namespace

StopLimit::StopLimit(double seconds, std::int64_t beginNs)
    : m_seconds(seconds), m_stuckSeconds(std::min(seconds, kStuckSeconds)), m_sinceNs(beginNs) {}

bool StopLimit::Expired(std::int64_t nowNs, std::size_t finished, bool stuck) {
  if (finished != m_finished || stuck != m_stuck) {
    m_finished = finished;
    m_stuck = stuck;
    m_sinceNs = nowNs;
  }
  return static_cast<double>(nowNs - m_sinceNs) * 1e-9 >= Seconds();
}
