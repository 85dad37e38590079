#include <QFile>
#include <QLocalServer>

#include "tests/control/control_fixture.h"

namespace corvane {
namespace {

using testing::HasSubstr;

using ControlServerTest = ControlTest;

TEST_F(ControlServerTest, BadInputIsRefusedOrDropped) {
  struct Row {
    QByteArray bytes;
    QByteArray answer;  // part of it
    bool stays;
  };
  for (const Row& row : std::vector<Row>{
           {"\n", "expected one JSON object", true},
           {QByteArray("\xFF\0\x01{[\n", 6), "expected one JSON object", true},
           {"[1]\n", "expected one JSON object", true},
           {"{}\n", R"(\"command\" takes a text)", true},
           {"{\"command\":7}\n", R"(\"command\" takes a text)", true},
           {"{\"command\":\"\\u0000\"}\n", "expected one of: status", true},
           {"{\"command\":\"users\",\"network\":{}}\n", R"(\"network\" takes a text)", true},
           {QByteArray(100 << 20, 'x'), "", false},
           {QByteArray((1 << 20) + 1, 'x') + '\n', "more than 1 MiB", false},
       }) {
    QLocalSocket client;
    EXPECT_THAT(Ask(client, row.bytes).toStdString(), HasSubstr(row.answer.toStdString()))
        << row.bytes.left(50).toStdString();
    if (row.stays) {
      client.write(R"({"command":"networks"})"
                   "\n");
      EXPECT_TRUE(PumpUntil([&] { return client.canReadLine(); })) << "it may ask again";
    } else {
      EXPECT_TRUE(PumpUntil([&] { return client.state() == QLocalSocket::UnconnectedState; }));
    }
  }
  EXPECT_TRUE(ann->HearsNothing()) << "and the relay is as it was";
}

TEST_F(ControlServerTest, SixteenClientsAreAdmittedAndOneThatLeavesMakesRoom) {
  std::vector<std::unique_ptr<QLocalSocket>> clients;
  for (int i = 0; i < 16; ++i) {
    clients.push_back(std::make_unique<QLocalSocket>());
    EXPECT_THAT(Ask(*clients.back(), R"({"command":"status"})"
                                     "\n{\"half"),
                HasSubstr("classic"));
  }
  EXPECT_EQ(Run({"status"}).exitCode, 1);
  clients.clear();
  EXPECT_TRUE(PumpUntil([this] { return Run({"status"}).exitCode == 0; }));
}

TEST_F(ControlServerTest, FolderHasOneServerAndADeadSocketIsReplaced) {
  EXPECT_EQ(ControlServer().Take(myFolder.path()), ControlServer::Claim::Taken);
  EXPECT_EQ(Run({"status"}).exitCode, 0);
  QTemporaryDir other;
  QFile left(other.filePath("corvane-server.sock"));
  ASSERT_TRUE(left.open(QIODevice::WriteOnly));
  EXPECT_EQ(Run({"--data-folder", other.path(), "status"}).exitCode, 3);
  EXPECT_EQ(ControlServer().Take(other.path()), ControlServer::Claim::Made);
  EXPECT_EQ(Run({"quit"}).exitCode, 0);
  EXPECT_TRUE(PumpUntil([this] { return myApp.IsQuitting(); }));
  QFile::remove(myFolder.filePath("corvane-server.sock"));
  EXPECT_EQ(ControlServer().Take(myFolder.path()), ControlServer::Claim::Taken);
}

TEST(ControlConnection, IdleClientIsDroppedUnlessItFollows) {
  const QTemporaryDir folder;
  QLocalServer server;
  ASSERT_TRUE(server.listen(LocalSocketName(folder.path(), kServerSocket)));
  QLocalSocket idle;
  QLocalSocket follower;
  std::vector<QPointer<ControlConnection>> connections;
  for (QLocalSocket* client : {&idle, &follower}) {
    client->connectToServer(LocalSocketName(folder.path(), kServerSocket));
    ASSERT_TRUE(server.waitForNewConnection(5'000));
    connections.emplace_back(new ControlConnection(server.nextPendingConnection(), &server,
                                                   std::chrono::milliseconds(50)));
  }
  connections[1]->StartFollowing();
  EXPECT_TRUE(PumpUntil([&] { return connections[0].isNull(); }));
  PumpFor(std::chrono::milliseconds(150));
  ASSERT_FALSE(connections[1].isNull());
  connections[1]->SendFollowed("still there");
  EXPECT_TRUE(PumpUntil([&] { return follower.readAll() == "still there\n"; }));
}

}  // namespace
}  // namespace corvane
