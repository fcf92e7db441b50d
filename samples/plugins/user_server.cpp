// user.server: users, their roles, and what a role permits.

#include <map>
#include <set>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Users : public UserService {
 public:
  Users()
      : m_permissions{{"guard", {"door.open", "alarm.see"}}, {"chief", {"alarm.acknowledge"}}},
        m_inherits{{"chief", "guard"}},
        m_roles{{"ada", "chief"}, {"bo", "guard"}} {}

  bool Has(const std::string& user, const std::string& permission) const override {
    auto role = m_roles.find(user);
    if (role == m_roles.end()) return false;
    for (std::string name = role->second; !name.empty();) {
      if (m_permissions.at(name).count(permission) != 0) return true;
      const auto parent = m_inherits.find(name);
      name = parent == m_inherits.end() ? std::string() : parent->second;
    }
    return false;
  }

 private:
  const std::map<std::string, std::set<std::string>> m_permissions;  // by role
  const std::map<std::string, std::string> m_inherits;               // role to role
  const std::map<std::string, std::string> m_roles;                  // by user
};

}  // namespace

bool Init() {
  const auto storage = board::Find<StorageService>();
  if (!storage) return false;
  const auto users = std::make_shared<Users>();
  board::Publish<UserService>(users);
  return users->Has("ada", "door.open") && !users->Has("bo", "alarm.acknowledge");
}

bool UnInit() {
  board::Withdraw(UserService::kName);
  return true;
}
