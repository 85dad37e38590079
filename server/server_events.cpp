#include "server/server_events.h"

namespace corvane {
namespace {

// By kind.
constexpr EventName kNames[] = {
    {"login", ""},
    {"leave", "client"},
    {"leave", "silent"},
    {"leave", "behind"},
    {"leave", "server"},
    {"refused", "unknown-network"},
    {"refused", "no-seat"},
    {"refused", "wrong-password"},
    {"refused", "name"},
    {"refused", "out-of-turn"},
    {"refused", "banned"},
    {"refused", "too-many-connections"},
    {"refused", "no-proxy-header"},
    {"kick", ""},
    {"ban", ""},
    {"lifted", ""},
    {"message", ""},
    {"network", "added"},
    {"network", "changed"},
    {"network", "removed"},
    {"started", ""},
    {"stopping", ""},
};
static_assert(std::size(kNames) == static_cast<std::size_t>(ServerEvent::Kind::kCount));

}  // namespace

EventName NameOf(ServerEvent::Kind kind) {
  return kNames[static_cast<std::size_t>(kind)];
}

}  // namespace corvane
