// user.server: the site's users, their cards, and what their roles permit, from two tables of the
// storage.

#include <map>
#include <set>
#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "user.server";

class Users : public UserService {
 public:
  /// Takes lines of "user role card" and of "role permission".
  Users(const std::string& users, const std::string& roles) {
    std::istringstream userWords(users);
    for (std::string user, role, card; userWords >> user >> role >> card;) {
      m_roles[user] = role;
      m_owners[card] = user;
    }
    std::istringstream roleWords(roles);
    for (std::string role, permission; roleWords >> role >> permission;) {
      m_permissions[role].insert(permission);
    }
  }

  std::size_t Count() const { return m_roles.size(); }

  std::string OwnerOf(const std::string& card) const override {
    const auto owner = m_owners.find(card);
    return owner == m_owners.end() ? std::string() : owner->second;
  }

  bool Has(const std::string& user, const std::string& permission) const override {
    const auto role = m_roles.find(user);
    if (role == m_roles.end()) return false;
    const auto permissions = m_permissions.find(role->second);
    return permissions != m_permissions.end() && permissions->second.count(permission) != 0;
  }

  std::vector<std::string> With(const std::string& permission) const override {
    std::vector<std::string> users;
    for (const auto& [user, role] : m_roles) {
      if (Has(user, permission)) users.push_back(user);
    }
    return users;
  }

 private:
  std::map<std::string, std::string> m_roles;                  // by user
  std::map<std::string, std::string> m_owners;                 // by card
  std::map<std::string, std::set<std::string>> m_permissions;  // by role
};

}  // namespace

bool Init() {
  const auto storage = board::Need<StorageService>(kPlugin);
  if (!storage) return false;
  const auto users = std::make_shared<Users>(storage->Table("users"), storage->Table("roles"));
  IKPXFormatLog(board::kProgress, kPlugin, "%s users", std::to_string(users->Count()).c_str());
  board::Publish<UserService>(users);
  return true;
}

bool UnInit() {
  board::Withdraw(UserService::kName);
  return true;
}
