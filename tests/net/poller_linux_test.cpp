#include <cerrno>
#include <cstddef>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <system_error>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "net/os_socket.h"
#include "net/poller.h"

namespace corvane {
namespace {

// From here on the system refuses the call with this error, for the calling thread.
bool Forbid(unsigned call, unsigned error) {
  sock_filter steps[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program{std::size(steps), steps};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// An old kernel does not know the call, a strict container forbids it; any other error is a fault.
TEST(Poller, DoesWithoutFineTimeoutsWhereTheSystemHasNone) {
  const struct {
    unsigned error;
    bool isServed;
  } cases[] = {{ENOSYS, true}, {EPERM, true}, {EBADF, false}};
  for (const auto& row : cases) {
    std::size_t ready = 0;
    bool hasThrown = false;
    Poller poller([] {});
    const os::SocketHandle socket = os::OpenSocket().handle;  // ready: it hangs
    ASSERT_EQ(poller.Add(socket, 7), 0);
    std::thread([&] {
      if (!Forbid(SYS_epoll_pwait2, row.error)) return;
      try {
        ready = poller.Wait(std::chrono::microseconds(100)).size();
      } catch (const std::system_error& fault) {
        hasThrown = fault.code().value() == static_cast<int>(row.error);
      }
    }).join();
    EXPECT_EQ(ready, row.isServed ? 1U : 0U) << row.error;
    EXPECT_EQ(hasThrown, !row.isServed) << row.error;
    os::CloseSocket(socket);
  }
}

}  // namespace
}  // namespace corvane
