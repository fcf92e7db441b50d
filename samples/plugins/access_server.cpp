// access.server: decides whose card opens a door.

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "access.server";

std::string Decision(const UserService& users, const CardService& cards, const std::string& card) {
  if (!cards.Valid(card)) return "stays closed: the card was misread";
  const std::string user = users.OwnerOf(card);
  if (user.empty()) return "stays closed: nobody's card";
  return users.Has(user, "door.open") ? "opens for " + user : "stays closed for " + user;
}

Subscription g_readers;

}  // namespace

bool Init() {
  const auto users = board::Need<UserService>(kPlugin);
  const auto devices = board::Need<DeviceService>(kPlugin);
  const auto cards = board::Need<CardService>(kPlugin);
  if (!users || !devices || !cards) return false;
  g_readers = devices->Watch(
      [users, cards](const DeviceService::Device& device, const std::string& reading) {
        if (device.kind != "door") return;
        IKPXFormatLog(board::kProgress, kPlugin, "%s %s", device.id.c_str(),
                      Decision(*users, *cards, reading).c_str());
      });
  return true;
}

bool UnInit() {
  g_readers.reset();
  return true;
}
