// user.server: users, whose roles are kept in storage, and what a role permits.

#include <map>
#include <set>
#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Users : public UserService {
 public:
  /// Takes lines of "user role". A role that nobody knows permits nothing.
  explicit Users(const std::string& text)
      : m_permissions{{"guard", {"door.open", "alarm.see"}}, {"chief", {"alarm.acknowledge"}}},
        m_inherits{{"chief", "guard"}} {
    std::istringstream words(text);
    for (std::string user, role; words >> user >> role;) m_roles[user] = role;
  }

  bool Has(const std::string& user, const std::string& permission) const override {
    const auto role = m_roles.find(user);
    if (role == m_roles.end()) return false;
    for (std::string name = role->second; !name.empty();) {
      const auto permissions = m_permissions.find(name);
      if (permissions != m_permissions.end() && permissions->second.count(permission) != 0) {
        return true;
      }
      const auto parent = m_inherits.find(name);
      name = parent == m_inherits.end() ? std::string() : parent->second;
    }
    return false;
  }

 private:
  const std::map<std::string, std::set<std::string>> m_permissions;  // by role
  const std::map<std::string, std::string> m_inherits;               // role to role
  std::map<std::string, std::string> m_roles;                        // by user
};

}  // namespace

bool Init() {
  const auto storage = board::Find<StorageService>();
  if (!storage) return false;
  storage->Put("users", "ada chief\nbo guard\ncleo visitor\n");
  const auto users = std::make_shared<Users>(storage->Get("users"));
  board::Publish<UserService>(users);
  return users->Has("ada", "door.open") && !users->Has("bo", "alarm.acknowledge") &&
         !users->Has("cleo", "door.open");
}

bool UnInit() {
  board::Withdraw(UserService::kName);
  return true;
}
