#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "net/os_socket.h"

namespace corvane {

// The header that a proxy sends before its client's bytes, in version 1 or 2 of the PROXY protocol
// (HAProxy's doc/proxy-protocol.txt).
struct ProxyHeader {
  enum class State { Known, Incomplete, Malformed };

  State state = State::Incomplete;
  std::size_t length = 0;  // of the whole header, once it is known
  // The client; its address may be IPv6. None for a connection of the proxy itself (LOCAL) or of an
  // unknown client (UNKNOWN, UNSPEC, no TCP): the connection's own address counts then.
  std::optional<os::Endpoint> source;
};

// A header is known or malformed within so many bytes. Behind them a longer one has only extensions
// (TLVs), which are ignored.
inline constexpr std::size_t kMaxProxyHeaderRead = 107;

// Reads the header at the start of the bytes. Malformed as soon as no header starts with them. If
// incomplete, all the bytes belong to the header.
ProxyHeader ReadProxyHeader(std::string_view bytes);

}  // namespace corvane
