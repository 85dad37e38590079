#pragma once

#include <string>

namespace corvane::client {

// The MD5 digest (RFC 1321) of a password, 16 raw bytes: the form in which it travels.
std::string PasswordDigest(const std::string& password);

}  // namespace corvane::client
