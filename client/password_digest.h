#pragma once

#include <string>

namespace corvane::client {

// The MD5 digest (RFC 1321) of a password, as 16 raw bytes. Clients send it in place of the
// password.
std::string PasswordDigest(const std::string& password);

}  // namespace corvane::client
