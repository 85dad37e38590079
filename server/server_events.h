#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "framework/signal.h"

namespace corvane {

// Something that happened on the server, for programs that watch it. Views are valid while the
// event is raised; a text that does not apply is empty.
struct ServerEvent {
  enum class Kind {
    Login,
    // A member left:
    LeftByItself,
    LeftSilent,    // its computer or the network is gone
    LeftBehind,    // it did not read, and its memory was used up
    LeftByServer,  // the server closed the connection
    // A client was refused:
    UnknownNetwork,
    NoSeat,
    WrongPassword,
    WrongName,
    OutOfTurn,
    Banned,
    TooMany,  // connections of its address
    HeaderMissing,
    Kick,
    Ban,
    Lifted,
    Message,
    NetworkAdded,
    NetworkChanged,
    NetworkRemoved,
    Started,
    Stopping,
    kCount
  };

  Kind kind;
  std::string_view user = {};
  std::string_view network = {};
  std::string_view address = {};
  std::string_view by = {};
  std::string_view text = {};  // a reason, a message, or what was lifted
};

// The names of a kind of event: its type, and for some types the reason.
struct EventName {
  std::string_view type;
  std::string_view reason;
};
EventName NameOf(ServerEvent::Kind kind);

// Counts events by kind and passes them on.
class ServerEvents {
 public:
  // Raised inside the action that caused the event. A listener must not act on sessions.
  Signal<const ServerEvent&> Happened;

  void Raise(const ServerEvent& event) {
    ++myCounts[static_cast<std::size_t>(event.kind)];
    Happened(event);
  }
  // Since the start.
  std::uint64_t Count(ServerEvent::Kind kind) const {
    return myCounts[static_cast<std::size_t>(kind)];
  }

 private:
  std::array<std::uint64_t, static_cast<std::size_t>(ServerEvent::Kind::kCount)> myCounts{};
};

}  // namespace corvane
