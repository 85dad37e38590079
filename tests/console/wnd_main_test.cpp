#include "console/wnd_main.h"

#include <gmock/gmock.h>
#include <optional>
#include <string>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include "framework/text.h"
#include "server/app.h"
#include "storage/app_settings.h"
#include "storage/database_connection.h"
#include "tests/support/test_client.h"
#include "tests/support/test_server.h"

using namespace corvane;
using testing::ElementsAre;

namespace {

std::string Cell(const QAbstractItemModel& model, int row, int column) {
  return TextFromDisplay(model.index(row, column).data().toString());
}

class WndMainTest : public testing::Test {
 protected:
  WndMainTest() {
    const QString file = myFolder.filePath("serverdb.rsd");
    MakeDatabase(file);
    DatabaseConnection database;
    EXPECT_TRUE(database.Connect(file));
    database.SQLExecute("INSERT INTO networks VALUES ('North', 'secret', 5, 1)");
    database.SQLExecute("INSERT INTO networks VALUES ('So\nuth', 'secret', 5, 1)");

    AppSettings settings(myFolder.path());
    settings.SetValue("AttachedNIC", "none");
    settings.SetValue("AttachedPort", "0");
    EXPECT_TRUE(myApp.Open());
    myWindow.emplace(myApp, [this] { return myHasTray; });
    myWindow->Open();
  }

  std::vector<std::string> Users() {
    std::vector<std::string> rows;
    const UsersModel& users = myWindow->Users();
    for (int row = 0; row < users.rowCount(); ++row) {
      rows.push_back(Cell(users, row, 0) + "@" + Cell(users, row, 1));
    }
    return rows;
  }

  QTemporaryDir myFolder;
  bool myHasTray = true;
  App myApp{myFolder.path(), [](const MessageBox&) { return MessageBox::Answer::OK; }};
  std::optional<wndMain> myWindow;
};

}  // namespace

TEST_F(WndMainTest, OpeningFillsTheNetworksAndListens) {
  const NetworksModel& networks = myWindow->Networks();
  ASSERT_EQ(networks.rowCount(), 2);
  EXPECT_EQ(Cell(networks, 0, 0), "North");
  EXPECT_EQ(Cell(networks, 1, 0), "So\\nuth");
  EXPECT_EQ(networks.NetworkAt(1), myWindow->sSocket->Networks.at(1));
  EXPECT_EQ(networks.NetworkAt(2), nullptr);
  EXPECT_TRUE(myWindow->sSocket->IsListening());
  EXPECT_EQ(myWindow->sSocket->MinimumSocketsAvailable(), 2);
  ASSERT_TRUE(QTest::qWaitFor([&] { return myWindow->Status().rowCount() == 1; }));
  EXPECT_TRUE(Cell(myWindow->Status(), 0, 0).ends_with("] Listening..."));
}

TEST_F(WndMainTest, AUserHasARowFromLogInToLogOut) {
  TestClient ann(myWindow->sSocket->Port());
  TestClient ben(myWindow->sSocket->Port());
  ASSERT_TRUE(ann.LogIn("north", "secret", "Ann"));
  ASSERT_TRUE(ben.LogIn("So\nuth", "secret", "<b>Ben\n</b>"));
  EXPECT_THAT(Users(), ElementsAre("Ann@North", "<b>Ben\\n</b>@So\\nuth"));
  const std::weak_ptr<ClientSocket> session = myWindow->Users().ClientAt(0);
  EXPECT_FALSE(session.expired());

  ann.Abort();
  ASSERT_TRUE(QTest::qWaitFor([&] { return Users().size() == 1; }));
  EXPECT_THAT(Users(), ElementsAre("<b>Ben\\n</b>@So\\nuth"));
  EXPECT_TRUE(QTest::qWaitFor([&] { return session.expired(); }));
}

TEST_F(WndMainTest, ShowsTheNewestLineUntilTheLogIsCleared) {
  StatusLogModel& status = myWindow->Status();
  for (int i = 0; i < 200; ++i)
    myWindow->sSocket->CallStatusMessage(std::to_string(i));
  myWindow->sSocket->CallStatusMessage("");
  ASSERT_TRUE(QTest::qWaitFor([&] { return status.rowCount() == 202; }));
  EXPECT_TRUE(Cell(status, 201, 0).ends_with("] "));
  const QRect viewport = myWindow->lstStatus->viewport()->rect();
  EXPECT_TRUE(viewport.contains(myWindow->lstStatus->visualRect(status.index(201)).center()));

  QTest::mouseClick(myWindow->btnClear, Qt::LeftButton);
  EXPECT_EQ(status.rowCount(), 0);
}

TEST_F(WndMainTest, LaysItsControlsOutByTheirAnchors) {
  QWidget* content = myWindow->centralWidget();
  const auto positions = [&] {
    return std::vector<QRect>{myWindow->lstStatus->geometry(), myWindow->lstNetworks->geometry(),
                              myWindow->lstUsers->geometry(),  myWindow->btnClear->geometry(),
                              myWindow->btnAdmins->geometry(), myWindow->btnBans->geometry()};
  };
  EXPECT_EQ(content->size(), QSize(533, 565));
  EXPECT_THAT(positions(), ElementsAre(QRect(20, 261, 493, 252), QRect(20, 20, 218, 229),
                                       QRect(250, 20, 263, 229), QRect(20, 525, 80, 20),
                                       QRect(243, 525, 129, 20), QRect(384, 525, 129, 20)));
  myWindow->resize(myWindow->size() + QSize(100, 50));
  EXPECT_THAT(positions(), ElementsAre(QRect(20, 261, 593, 302), QRect(20, 20, 218, 229),
                                       QRect(250, 20, 363, 229), QRect(20, 575, 80, 20),
                                       QRect(243, 525, 129, 20), QRect(384, 525, 129, 20)));
  myWindow->resize(1, 1);
  EXPECT_EQ(myWindow->size(), QSize(64, 64));
}

TEST_F(WndMainTest, ClosingHidesOrMinimisesAndTheServerGoesOn) {
  myHasTray = false;
  EXPECT_FALSE(myWindow->close());
  EXPECT_TRUE(myWindow->isVisible());
  EXPECT_TRUE(myWindow->isMinimized());
  myHasTray = true;
  EXPECT_FALSE(myWindow->close());
  EXPECT_FALSE(myWindow->isVisible());
  EXPECT_FALSE(myApp.IsQuitting());
  TestClient ann(myWindow->sSocket->Port());
  EXPECT_TRUE(ann.LogIn("North", "secret", "Ann"));
}

TEST_F(WndMainTest, ExitInTheMenuQuitsAndThenClosingIsAllowed) {
  auto* exit = myWindow->findChild<QAction*>("FileQuit");
  ASSERT_NE(exit, nullptr);
  EXPECT_EQ(exit->text(), "E&xit");
  QTimer::singleShot(0, [&] { exit->trigger(); });
  EXPECT_EQ(QApplication::exec(), 0);
  EXPECT_TRUE(myApp.IsQuitting());
  EXPECT_TRUE(myWindow->close());
}
