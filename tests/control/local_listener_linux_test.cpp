#include <cstring>
#include <memory>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "control/local_listener.h"
#include "tests/support/test_client.h"

namespace corvane {
namespace {

// Uses up all descriptors of the process.
class NoDescriptors {
 public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &myBefore);
    const int next = dup(STDERR_FILENO);
    close(next);
    rlimit few = myBefore;
    few.rlim_cur = static_cast<rlim_t>(next) + 50;
    setrlimit(RLIMIT_NOFILE, &few);
    for (int taken = dup(STDERR_FILENO); taken >= 0; taken = dup(STDERR_FILENO))
      myTaken.push_back(taken);
  }
  ~NoDescriptors() {
    for (const int taken : myTaken)
      close(taken);
    setrlimit(RLIMIT_NOFILE, &myBefore);
  }
  NoDescriptors(const NoDescriptors&) = delete;
  NoDescriptors& operator=(const NoDescriptors&) = delete;

 private:
  rlimit myBefore{};
  std::vector<int> myTaken;
};

TEST(LocalListener, WithoutDescriptorsOneClientIsServedAndTheOthersLater) {
  const QTemporaryDir folder;
  const QString name = folder.filePath("socket");
  std::vector<std::unique_ptr<QLocalSocket>> accepted;
  LocalListener listener;
  ASSERT_TRUE(listener.Listen(name)) << listener.Error();
  EXPECT_EQ(QFile::permissions(name) &
                (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
            QFile::Permissions());
  listener.Serve([&accepted](QLocalSocket* client) { accepted.emplace_back(client); });
  sockaddr_un address{AF_UNIX, {}};
  std::strcpy(address.sun_path, QFile::encodeName(name).constData());
  const int clients[] = {socket(AF_UNIX, SOCK_STREAM, 0), socket(AF_UNIX, SOCK_STREAM, 0)};
  {
    const NoDescriptors none;
    for (const int client : clients)
      ASSERT_EQ(connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_TRUE(PumpUntil([&] { return !accepted.empty(); }));
    PumpFor(std::chrono::milliseconds(100));
    EXPECT_EQ(accepted.size(), 1U);
  }
  EXPECT_TRUE(PumpUntil([&] { return accepted.size() == 2; }));
  for (const int client : clients) {
    EXPECT_EQ(write(client, "x", 1), 1);
    close(client);
  }
  QByteArray received;
  EXPECT_TRUE(PumpUntil([&] {
    for (const auto& client : accepted)
      received += client->readAll();
    return received == "xx";
  }));
}

}  // namespace
}  // namespace corvane
