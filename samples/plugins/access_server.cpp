// access.server: decides who may pass which door, and does not let one card in twice.

#include <set>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Doors {
 public:
  explicit Doors(const UserService& users) : m_users(users) {}

  bool Enter(const std::string& user) {
    return m_users.Has(user, "door.open") && m_inside.insert(user).second;
  }

  void Leave(const std::string& user) { m_inside.erase(user); }

 private:
  const UserService& m_users;
  std::set<std::string> m_inside;
};

}  // namespace

bool Init() {
  const auto users = board::Find<UserService>();
  const auto devices = board::Find<DeviceService>();
  if (!users || !devices || devices->OfKind("door").empty()) return false;
  Doors doors(*users);
  const bool entered = doors.Enter("bo") && !doors.Enter("bo") && !doors.Enter("stranger");
  doors.Leave("bo");
  return entered && doors.Enter("bo");
}

bool UnInit() {
  return true;
}
