#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

namespace corvane {

// File permissions mean nothing to the superuser: while the object lives, a process of the
// superuser acts as nobody.
class UnprivilegedUser {
 public:
  UnprivilegedUser() {
    constexpr uid_t kNobody = 65534;
    if (myUser == 0) {
      EXPECT_EQ(seteuid(kNobody), 0);
    }
  }
  ~UnprivilegedUser() {
    if (myUser == 0) {
      EXPECT_EQ(seteuid(myUser), 0);
    }
  }
  UnprivilegedUser(const UnprivilegedUser&) = delete;
  UnprivilegedUser& operator=(const UnprivilegedUser&) = delete;

 private:
  const uid_t myUser = geteuid();
};

}  // namespace corvane
