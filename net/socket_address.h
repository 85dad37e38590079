#pragma once

#include "net/os_socket.h"

// Converts addresses to and from the system's types. Only for the platform halves of os_socket.h,
// which include the system's headers first: both systems use the same names.
namespace corvane::os {

inline bool ToSystem(const Endpoint& endpoint, sockaddr_in& address) {
  address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(endpoint.port);
  if (endpoint.address.empty()) {
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    return true;
  }
  return inet_pton(AF_INET, endpoint.address.c_str(), &address.sin_addr) == 1;
}

inline Endpoint FromSystem(const sockaddr_in& address) {
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
  return {text, ntohs(address.sin_port)};
}

inline sockaddr* Generic(sockaddr_in& address) {
  return reinterpret_cast<sockaddr*>(&address);
}

}  // namespace corvane::os
