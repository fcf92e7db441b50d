// notification.server: tells people, but not twice of the same thing within a while.

#include <map>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Notifier {
 public:
  explicit Notifier(int quietSeconds) : m_quietSeconds(quietSeconds) {}

  /// Whether the text is to be sent at this second.
  bool Notify(const std::string& text, int second) {
    const auto last = m_lastSent.find(text);
    if (last != m_lastSent.end() && second - last->second < m_quietSeconds) return false;
    m_lastSent[text] = second;
    return true;
  }

 private:
  const int m_quietSeconds;
  std::map<std::string, int> m_lastSent;
};

}  // namespace

bool Init() {
  if (!board::Find<EventBusService>() || !board::Find<UserService>()) return false;
  Notifier notifier(60);
  return notifier.Notify("door open", 0) && !notifier.Notify("door open", 59) &&
         notifier.Notify("smoke", 59) && notifier.Notify("door open", 60);
}

bool UnInit() {
  return true;
}
