#include "server/app.h"

#include <functional>
#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

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
  MessageBoxFunction show = [this](const MessageBox& box) {
    boxes.push_back(box.text);
    return MessageBox::Answer::OK;
  };

  QTemporaryDir folder;
  QString file = folder.filePath(QStringLiteral("serverdb.rsd"));
};

TEST_F(AppTest, EachStartUpFailureHasItsMessage) {
  App(std::nullopt, show).Open();
  EXPECT_FALSE(App(folder.path(), show).Open());
  QFile broken(file);
  ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
  broken.write(
      "this is no database, and it is longer than a header of one hundred bytes, so that "
      "it is read as one and refused");
  broken.close();
  EXPECT_FALSE(App(folder.path(), show).Open());
  ASSERT_TRUE(broken.remove() && QDir(folder.path()).mkdir(QStringLiteral("serverdb.rsd")));
  EXPECT_FALSE(App(folder.path(), show).Open());
  const std::string connecting = "An error occured while connecting to the database.";
  EXPECT_THAT(boxes,
              ElementsAre("Unable to locate database.  You may need to uninstall and reinstall.",
                          "Unable to locate database at:\n" + file.toStdString() +
                              "\n\nYou may need to uninstall and reinstall.",
                          connecting, connecting));
}

class LoadTest : public AppTest {
 protected:
  // Starts a server on the folder's files and calls back with what it loaded.
  void Load(const std::function<void(MapSocket&)>& look) {
    App app(folder.path(), show);
    ASSERT_TRUE(app.Open());
    const auto listener = std::make_shared<MapSocket>(app.Loop(), app.serverdb(), app.Locations());
    listener->StatusMessage = [this](MapSocket&, const std::string& text) {
      status.push_back(text);
    };
    added = 0;
    app.LoadServerSocket(*listener, [&](const NetworkRef&) {
      ++added;
      EXPECT_TRUE(listener->IsListening()) << "clients may come while networks are loaded";
    });
    look(*listener);
  }

  void Settings(const std::string& nic, const std::string& port) {
    AppSettings settings(folder.path());
    settings.Load();
    settings.SetValue("AttachedNIC", nic);
    settings.SetValue("AttachedPort", port);
  }

  std::vector<std::string> status;
  int added = 0;
};

TEST_F(LoadTest, NetworksAreReadAsFarAsTheirValuesMakeSense) {
  MakeDatabase(file);
  OtherProgram(file).Run(
      "ALTER TABLE networks ADD COLUMN remark;"
      "INSERT INTO networks (name, pass, users, enabled) VALUES "
      "('Demo', 'secret', 5, 1), (NULL, NULL, NULL, NULL), ('Demo', x'00ff', 'many', 'true'), "
      "('big', 1.5, 99999999999, 0)");
  Settings("none", "0");
  Load([this](MapSocket& listener) {
    EXPECT_TRUE(listener.IsListening());
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
    TestClient client(listener.Port());
    EXPECT_TRUE(client.LogIn("demo", "secret", "Ann"));
  });
  EXPECT_THAT(boxes, IsEmpty());
}

TEST_F(LoadTest, ImpossiblePortIsAListenerErrorAndTheWindowStillComesUp) {
  MakeDatabase(file);
  Settings("none", "70000");
  Load([](MapSocket& listener) { EXPECT_FALSE(listener.IsListening()); });
  EXPECT_THAT(status,
              ElementsAre("Server Error: " + std::to_string(kInvalidArgument), "Listening..."));
}

TEST(NICByMac, FindsTheFirstOfThatAddress) {
  const std::vector<NetworkInterface> interfaces = {{"00:1A:2B:3C:4D:5E", "10.0.0.1"},
                                                    {"AA:00:00:00:00:01", "10.0.0.2"},
                                                    {"aa:00:00:00:00:01", "10.0.0.3"}};
  EXPECT_EQ(NICByMac(interfaces, "aa:00:00:00:00:01")->IPAddress, "10.0.0.2");
  EXPECT_FALSE(NICByMac(interfaces, "none"));
  EXPECT_FALSE(NICByMac({}, ""));
}

}  // namespace
}  // namespace corvane
