#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "net/os_socket.h"
#include "tests/net/recording_server.h"

namespace corvane {
namespace {

using testing::ElementsAre;

class DescriptorLimitTest : public NetTest {
 protected:
  DescriptorLimitTest() {
    getrlimit(RLIMIT_NOFILE, &before);
    // The sanitizers look at a type once, and need descriptors for it.
    EXPECT_THAT(server->errors, ElementsAre());
  }
  void TearDown() override { setrlimit(RLIMIT_NOFILE, &before); }

  // Lets the process open so many more.
  void Exhaust(rlim_t left = 0) const {
    const int next = fcntl(0, F_DUPFD, 0);
    close(next);
    rlimit limit = before;
    limit.rlim_cur = static_cast<rlim_t>(next) + left;
    setrlimit(RLIMIT_NOFILE, &limit);
  }

  rlimit before = {};
};

TEST_F(DescriptorLimitTest, AcceptingPausesAndResumesByItself) {
  server->Listen();
  const std::array clients = {os::OpenSocket().handle, os::OpenSocket().handle};
  const auto port = static_cast<std::uint16_t>(server->Port());
  Exhaust();
  for (const os::SocketHandle client : clients) {
    EXPECT_EQ(os::Connect(client, {"127.0.0.1", port}), 0);
  }
  EXPECT_TRUE(PumpUntil([this] { return !server->errors.empty(); }));
  // Long enough for several attempts, each of which fails again.
  PumpFor(std::chrono::milliseconds(2'500));
  const std::size_t served = server->ActiveCount();
  setrlimit(RLIMIT_NOFILE, &before);  // the sanitizers' own checks need descriptors
  EXPECT_EQ(served, 0U);
  EXPECT_THAT(server->errors, ElementsAre(EMFILE));
  EXPECT_TRUE(PumpUntil([this] { return server->ActiveCount() == 2; }));
  EXPECT_THAT(server->errors, ElementsAre(EMFILE));
  for (const os::SocketHandle client : clients)
    os::CloseSocket(client);
}

TEST_F(DescriptorLimitTest, SomeAreLeftForTheRestOfTheProgram) {
  server->SetMaximumSocketsConnected(100);
  server->Listen();
  const auto first = Connect();
  std::vector<os::SocketHandle> clients(30);
  std::ranges::generate(clients, [] { return os::OpenSocket().handle; });
  const auto port = static_cast<std::uint16_t>(server->Port());
  Exhaust(40);
  for (const os::SocketHandle client : clients) {
    EXPECT_EQ(os::Connect(client, {"127.0.0.1", port}), 0);
  }
  EXPECT_TRUE(PumpUntil([this] { return !server->errors.empty(); }));
  PumpFor(std::chrono::milliseconds(1'500));
  const std::size_t served = server->ActiveCount();
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_GT(served, 5U);
  EXPECT_LE(served, 9U) << "of 40, and 32 stay free";
  EXPECT_TRUE(PumpUntil([this] { return server->ActiveCount() == 31; }));
  for (const os::SocketHandle client : clients)
    os::CloseSocket(client);
}

TEST_F(NetTest, AcceptedConnectionHasTheListenersOptions) {
  server->Listen();
  const TestClient client(server->Port());
  ASSERT_TRUE(PumpUntil([this] { return server->ActiveCount() == 1; }));
  const auto option = [&](int level, int name) {
    int value = 0;
    socklen_t length = sizeof value;
    getsockopt(static_cast<int>(server->Active(0)->Handle()), level, name, &value, &length);
    return value;
  };
  EXPECT_EQ(option(IPPROTO_TCP, TCP_NODELAY), 1);
  EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 1);
  EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPIDLE), 60);
  EXPECT_EQ(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 180'000);
}

}  // namespace
}  // namespace corvane
