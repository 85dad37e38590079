#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include "net/os_socket.h"
#include "tests/net/recording_server.h"

namespace corvane {
namespace {

using testing::ElementsAre;

class DescriptorLimitTest : public NetTest {
 protected:
  DescriptorLimitTest() {
    getrlimit(RLIMIT_NOFILE, &before);
    // The sanitizers need descriptors when they meet a type for the first time.
    EXPECT_THAT(server->errors, ElementsAre());
  }
  void TearDown() override {
    setrlimit(RLIMIT_NOFILE, &before);
    NetTest::TearDown();
  }

  // Connects so many peers to a process with so many free descriptors.
  void RushWith(rlim_t left, std::size_t count) {
    Rush(count, [this, left] {
      const int next = fcntl(0, F_DUPFD, 0);
      close(next);
      limit = static_cast<rlim_t>(next) + left;
      const rlimit lower = {limit, before.rlim_max};
      setrlimit(RLIMIT_NOFILE, &lower);
    });
  }
  // The same until it reports that it is out of them.
  void Exhaust(std::size_t count, rlim_t left) {
    const std::size_t errors = server->errors.size();
    RushWith(left, count);
    EXPECT_TRUE(PumpUntil([&] { return server->errors.size() > errors; }));
  }
  // The same for several attempts of the server; returns how many peers were served.
  std::size_t ServedOf(std::size_t count, rlim_t left) {
    const std::size_t served = server->ActiveCount();
    Exhaust(count, left);
    PumpFor(std::chrono::milliseconds(2'500));
    const std::size_t more = server->ActiveCount() - served;
    setrlimit(RLIMIT_NOFILE, &before);  // the sanitizers' checks need descriptors
    return more;
  }

  rlimit before = {};
  rlim_t limit = 0;
};

TEST_F(DescriptorLimitTest, AcceptingPausesAndResumesByItself) {
  server->Listen();
  EXPECT_EQ(ServedOf(2, 0), 0U);
  EXPECT_TRUE(PumpUntil([this] { return server->ActiveCount() == 2; }));
  EXPECT_THAT(server->errors, ElementsAre(EMFILE));

  Exhaust(1, 0);
  setrlimit(RLIMIT_NOFILE, &before);
  PumpFor(std::chrono::milliseconds(300));
  EXPECT_EQ(server->ActiveCount(), 2U) << "tried again without a pause";
  EXPECT_TRUE(PumpUntil([this] { return server->ActiveCount() == 3; }));
  EXPECT_THAT(server->errors, ElementsAre(EMFILE, EMFILE));
}

TEST_F(DescriptorLimitTest, SomeAreLeftForTheRestOfTheProgram) {
  server->SetMaximumSocketsConnected(200);
  server->Listen();
  const auto first = Connect();
  // The first limit is about 80 descriptors, the second about 210.
  for (const auto& [count, spare] : {std::pair{30U, 0U}, {100U, 32U}}) {
    const std::size_t served = ServedOf(count, 40);
    const std::size_t kept = spare != 0 ? spare : limit / 4;
    EXPECT_GT(served + kept, 36U) << count;
    EXPECT_LE(served + kept, 40U) << count;
    EXPECT_TRUE(PumpUntil([&] { return server->ActiveCount() == 1 + rush.size(); }));
  }
}

TEST_F(DescriptorLimitTest, SilentProxiesCostNobodyElse) {
  server->ProxyAddresses = AddressRanges("127.0.0.1");
  server->Listen();
  const os::Endpoint listener{"127.0.0.1", static_cast<std::uint16_t>(server->Port())};
  Rush(3);
  PumpFor(std::chrono::milliseconds(100));
  // None left: connections take the numbers of those three. 110 left: fewer than connect.
  for (const rlim_t left : {0U, 110U}) {
    const std::size_t served = server->ActiveCount() + 2;
    const os::SocketHandle direct = os::OpenSocket().handle;
    const os::SocketHandle proxied = os::OpenSocket().handle;
    EXPECT_EQ(os::Bind(direct, {"127.0.0.2", 0}), 0);
    RushWith(left, 200);
    rush.insert(rush.end(), {direct, proxied});
    EXPECT_EQ(os::Connect(direct, listener), 0);
    EXPECT_EQ(os::Connect(proxied, listener), 0);
    os::Send(proxied, "PROXY TCP4 192.0.2.17 127.0.0.1 1 1\r\n");
    EXPECT_TRUE(PumpUntil([&] { return server->ActiveCount() == served; })) << left;
    setrlimit(RLIMIT_NOFILE, &before);
  }
  EXPECT_THAT(server->errors, ElementsAre());
  const int spare = static_cast<int>(limit) - 32;
  const int next = fcntl(0, F_DUPFD, spare);
  close(next);
  EXPECT_EQ(next, spare) << "the rest of the program's was taken";

  const rlimit highest = {before.rlim_max, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &highest);
  Rush(1'030);
  EXPECT_TRUE(PumpUntil([this] { return server->withoutHeader == 3 + 400 + 6; }))
      << "no more than 1024 wait";
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
  EXPECT_EQ(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 90'000);
  // A child process must not keep the port.
  for (const os::SocketHandle handle : {server->Handle(), server->Active(0)->Handle()})
    EXPECT_EQ(fcntl(static_cast<int>(handle), F_GETFD), FD_CLOEXEC);
}

}  // namespace
}  // namespace corvane
