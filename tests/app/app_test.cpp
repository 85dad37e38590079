#include "app/app.h"

#include <fstream>
#include <system_error>
#include <thread>

#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QTcpServer>
#include <QTimer>
#include <gmock/gmock.h>

#include "app/server_application.h"
#include "tests/support/socket_errors.h"
#include "tests/support/test_server.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class AppTest : public testing::Test {
 protected:
  std::vector<std::string> boxes;
  std::function<void()> onMessage;
  MessageBoxFunction show = [this](const MessageBox& box) {
    boxes.push_back(box.text);
    if (onMessage) onMessage();
    return MessageBox::Answer::OK;
  };

  QTemporaryDir folder;
  QString file = folder.filePath(QStringLiteral("serverdb.rsd"));
};

TEST_F(AppTest, EachStartUpFailureHasItsMessage) {
  App(std::nullopt, show).Open();
  EXPECT_FALSE(App(folder.path(), show).Open());
  std::ofstream(file.toStdString()) << std::string(200, 'x');
  EXPECT_FALSE(App(folder.path(), show).Open());
  ASSERT_TRUE(QFile::remove(file) && QDir(folder.path()).mkdir(QStringLiteral("serverdb.rsd")));
  EXPECT_FALSE(App(folder.path(), show).Open());
  const std::string connecting = "An error occured while connecting to the database.";
  EXPECT_THAT(
      boxes,
      ElementsAre("Unable to locate database.  You may need to uninstall and reinstall.",
                  "Unable to locate database at:\n" + QDir::toNativeSeparators(file).toStdString() +
                      "\n\nYou may need to uninstall and reinstall.",
                  connecting, connecting));
}

TEST_F(AppTest, MissingTablesAndColumnsAreReportedAtTheStart) {
  const std::string all = "the table networks, the table bans, the table admins";
  const std::string script =
      "BEGIN; CREATE TABLE Networks(name, pass, users, Enabled);"
      "CREATE VIEW admins AS SELECT 1 id, '' name, '' address;";
  for (const auto& [statements, lacks] :
       {std::pair{""s, all},
        {"CREATE TABLE notes(text)", all},
        {script + "CREATE TABLE bans(id, address, \"by\", bandate, banlength, network); COMMIT",
         "the column bans.reason, the column admins.network"}}) {
    QFile::remove(file);
    ASSERT_TRUE(QFile(file).open(QIODevice::WriteOnly));
    if (!statements.empty()) OtherProgram(file).Run(statements);
    std::vector<std::string> complaints;
    App app(folder.path(), show);
    app.serverdb().FaultReported = [&complaints](const std::string& line) {
      complaints.push_back(line);
    };
    EXPECT_TRUE(app.Open());
    EXPECT_THAT(complaints,
                ElementsAre("database: " + QDir::toNativeSeparators(file).toStdString() +
                            " lacks " + lacks));
  }
  QFile::remove(file);
  MakeDatabase(file);
  App app(folder.path(), show);
  app.serverdb().FaultReported = [](const std::string& line) { FAIL() << line; };
  EXPECT_TRUE(app.Open());
}

TEST_F(AppTest, StartSaysWhoSendsProxyHeaders) {
  MakeDatabase(file);
  AppSettings settings(folder.path());
  for (const auto& [proxies, line] :
       {std::pair{"", ""},
        {"127.0.0.1, 10.0.0.0/8 x", "PROXY headers expected from: 127.0.0.1, 10.0.0.0/8\n"}}) {
    settings.SetValue("ProxyAddresses", proxies);
    App app(folder.path(), show);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(app.Open());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::EndsWith("Rules in force: classic\n"s + line));
  }
}

TEST_F(AppTest, LocationDatabaseIsReadFromTheDataFolderUnlessALocatorIsSet) {
  MakeDatabase(file);
  AppSettings settings(folder.path());
  settings.SetValue("LocationDatabase", "places.mmdb");
  std::vector<std::string> logged;
  for (const std::string locator : {"http://127.0.0.1:1", ""}) {
    EXPECT_THAT(logged, IsEmpty());
    settings.SetValue("LocatorAddress", locator);
    App app(folder.path(), show);
    app.Locations().Logged = [&logged](const std::string& line) { logged.push_back(line); };
    ASSERT_TRUE(app.Open());
  }
  const std::string places = folder.filePath("places.mmdb").toStdString();
  EXPECT_THAT(logged, ElementsAre(testing::HasSubstr(places + ": there is no such file")));
}

class LoadTest : public AppTest {
 protected:
  LoadTest() {
    MakeDatabase(file);
    AppSettings settings(folder.path());
    settings.SetValue("AttachedNIC", "none");
    settings.SetValue("AttachedPort", "0");
  }

  // Starts a server in the folder and passes its listener to `look`.
  void Load(const std::function<void(MapSocket&)>& look) {
    ASSERT_TRUE(app.Open());
    app.Settings().FaultReported = [this](const std::string& line) { complaints.push_back(line); };
    added = 0;
    MapSocket& listener = app.Listener();
    const auto lines = listener.StatusMessage.Connect(
        [this](MapSocket&, const std::string& text) { status.push_back(text); });
    const auto networks = app.Op().NetworkAdded.Connect([&](const NetworkRef&) {
      ++added;
      EXPECT_TRUE(listener.IsListening()) << "clients may come while networks are loaded";
      if (networkAdded) networkAdded(listener);
    });
    app.LoadServerSocket();
    look(listener);
  }

  App app{folder.path(), show};
  std::function<void(MapSocket&)> networkAdded;
  std::vector<std::string> status;
  std::vector<std::string> complaints;
  int added = 0;
};

TEST_F(LoadTest, UnsetInterfaceAndPortAreTheFirstAnd12000) {
  QFile::remove(folder.filePath("Corvane Server.xml"));
  const std::vector<NetworkInterface> interfaces = NetworkInterfaces();
  Load([&](MapSocket& listener) {
    EXPECT_EQ(listener.Port(), 12000) << "also where somebody else has it";
    EXPECT_EQ(app.Settings().GetValue("AttachedPort", "none"), "12000");
    const std::string mac = app.Settings().GetValue("AttachedNIC", "none");
    if (interfaces.empty()) return;
    EXPECT_EQ(mac, interfaces.front().MACAddress);
    ASSERT_TRUE(listener.NetworkInterface);
    EXPECT_EQ(listener.NetworkInterface->IPAddress, interfaces.front().IPAddress);
  });
}

TEST_F(LoadTest, ClientsAreServedWhileManyNetworksAreLoaded) {
  OtherProgram(file).Run(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<200)"
      "INSERT INTO networks SELECT 'n' || i, '', 1, 1 FROM n");
  QTcpSocket client;
  std::size_t connectedAt = 0;
  networkAdded = [&](MapSocket& listener) {
    if (added == 1) {
      client.connectToHost(QHostAddress(QHostAddress::LocalHost),
                           static_cast<quint16>(listener.Port()));
      EXPECT_TRUE(client.waitForConnected());
    }
    if (added == 65) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (connectedAt == 0 && !listener.ActiveConnections()->empty()) {
      connectedAt = listener.Networks.size();
    }
  };
  Load([](MapSocket&) {});
  EXPECT_EQ(added, 200);
  EXPECT_NE(connectedAt, 0U);
}

TEST_F(LoadTest, ErrorInAHandlerClosesAllConnectionsBeforeItsMessageIsAnswered) {
  OtherProgram(file).Run("INSERT INTO networks VALUES('Demo', 'secret', 5, 1)");
  Load([this](MapSocket& listener) {
    const std::int32_t port = listener.Port();
    TestClient ann(port);
    EXPECT_TRUE(ann.Login("demo", "secret", "Ann"));
    TestClient newcomer(port);
    EXPECT_EQ(newcomer.Receive(), (WireMessage{1, "Network"}));
    TestClient ben(port);
    EXPECT_TRUE(ben.Login("demo", "secret", "Ben"));
    onMessage = [&] {
      // The operator has not answered the message yet.
      EXPECT_EQ(ann.Receive(), (WireMessage{998, "hello"}));
      EXPECT_TRUE(ann.WasClosedByServer());
      EXPECT_TRUE(TestClient(port).IsClosed());
    };
    auto& application = dynamic_cast<ApplicationHooks&>(*qApp);
    application.LastResort = [this] {
      app.LastResort();
      app.LastResort();  // shows one message
    };
    QTimer::singleShot(0, [this] { app.Op().Send("hello", "(All Networks)"); });
    EXPECT_EQ(QCoreApplication::exec(), 1);
    application.LastResort = nullptr;
    EXPECT_TRUE(newcomer.HearsNothing());
    EXPECT_TRUE(ben.HearsNothing());
  });
  EXPECT_TRUE(app.IsQuitting());
  EXPECT_THAT(boxes, ElementsAre("An exception of class NilObjectException was not handled.  "
                                 "The application must shut down."));
}

TEST_F(LoadTest, NetworksWithOddValuesAreRead) {
  OtherProgram(file).Run(
      "ALTER TABLE networks ADD COLUMN remark;"
      "INSERT INTO networks (name, pass, users, enabled) VALUES "
      "('Demo', 'secret', 5, 1), (NULL, NULL, NULL, NULL), ('Demo', x'00ff', 'many', 'true'), "
      "('big', 1.5, 99999999999, 0)");
  Load([this](MapSocket& listener) {
    EXPECT_EQ(listener.MaximumSocketsConnected(), 100'000);
    EXPECT_EQ(listener.MinimumSocketsAvailable(), 2);
    std::vector<std::string> networks;
    for (const NetworkRef& network : listener.Networks) {
      networks.push_back(network->NetworkName + "|" + network->Password + "|" +
                         std::to_string(network->MaxUsers) + (network->Enabled ? "|on" : "|off"));
    }
    EXPECT_THAT(networks, ElementsAre("Demo|secret|5|on", "||0|off", "Demo|\0\xFF|0|on"s,
                                      "big|1.5|2147483647|off"));
    EXPECT_EQ(added, 4);
  });
  EXPECT_THAT(boxes, IsEmpty());
  EXPECT_THAT(complaints, IsEmpty()) << "all interfaces are what was asked for";
}

TEST_F(LoadTest, FailureToListenIsReportedAndTheRestIsLoaded) {
  QTcpServer other;
  ASSERT_TRUE(other.listen());
  const struct {
    std::string port;
    int code;
    std::string words;
  } cases[] = {{std::to_string(other.serverPort()), kAddressInUse,
                std::system_category().message(kAddressInUse)},
               {"70000", kInvalidArgument, "there is no such port"}};
  Load([](MapSocket&) {});
  const auto lines = app.Listener().StatusMessage.Connect(
      [this](MapSocket&, const std::string& text) { status.push_back(text); });
  app.Settings().SetValue("AttachedNIC", "00:00:5E:00:53:01");
  for (const auto& row : cases) {
    app.Settings().SetValue("AttachedPort", row.port);
    status.clear();
    testing::internal::CaptureStderr();
    app.LoadServerSocket();
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("port " + row.port + ": " + row.words));
    EXPECT_THAT(status, ElementsAre("Server Error: " + std::to_string(row.code), "Listening..."));
  }
  EXPECT_THAT(
      complaints,
      testing::Each(testing::EndsWith(
          "no interface has the address \"00:00:5E:00:53:01\"; the server listens on all")));
  EXPECT_EQ(complaints.size(), 2U);
}

TEST(NICByMac, FindsTheFirstInterfaceOfTheAddress) {
  const std::vector<NetworkInterface> interfaces = {{"00:1A:2B:3C:4D:5E", "10.0.0.1"},
                                                    {"AA:00:00:00:00:01", "10.0.0.2"},
                                                    {"aa:00:00:00:00:01", "10.0.0.3"}};
  EXPECT_EQ(NICByMac(interfaces, "aa:00:00:00:00:01")->IPAddress, "10.0.0.2");
  EXPECT_FALSE(NICByMac(interfaces, "none"));
  EXPECT_FALSE(NICByMac({}, ""));
}

}  // namespace
}  // namespace corvane
