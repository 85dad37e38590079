#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

namespace corvane {

// Makes a superuser's process act as the user nobody for the lifetime of the object, since file
// permissions do not apply to a superuser.
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
