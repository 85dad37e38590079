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
#include "tests/support/other_program.h"
#include "tests/support/test_client.h"

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
    OtherProgram(file).Run(
        "INSERT INTO networks VALUES ('North','secret',5,1),('So\nuth','secret',5,1)");
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

TEST_F(WndMainTest, ShowsItsNetworksAndEachUserFromLogInToLogOut) {
  const NetworksModel& networks = myWindow->Networks();
  ASSERT_EQ(networks.rowCount(), 2);
  EXPECT_EQ(Cell(networks, 0, 0), "North");
  EXPECT_EQ(Cell(networks, 1, 0), "So\\nuth");
  ASSERT_TRUE(QTest::qWaitFor([&] { return myWindow->Status().rowCount() == 1; }));
  EXPECT_TRUE(Cell(myWindow->Status(), 0, 0).ends_with("] Listening..."));

  TestClient ann(myWindow->sSocket->Port());
  TestClient ben(myWindow->sSocket->Port());
  ASSERT_TRUE(ann.LogIn("north", "secret", "Ann"));
  ASSERT_TRUE(ben.LogIn("So\nuth", "secret", "<b>Ben\n</b>"));
  EXPECT_THAT(Users(), ElementsAre("Ann@North", "<b>Ben\\n</b>@So\\nuth"));
  ann.Abort();
  ASSERT_TRUE(QTest::qWaitFor([&] { return Users().size() == 1; }));
  EXPECT_THAT(Users(), ElementsAre("<b>Ben\\n</b>@So\\nuth"));
}

TEST_F(WndMainTest, ShowsTheNewestLineUntilTheLogIsCleared) {
  StatusLogModel& status = myWindow->Status();
  for (int i = 0; i < 200; ++i)
    myWindow->sSocket->CallStatusMessage(std::to_string(i));
  ASSERT_TRUE(QTest::qWaitFor([&] { return status.rowCount() == 201; }));
  EXPECT_TRUE(Cell(status, 200, 0).ends_with("] 199"));
  const QRect viewport = myWindow->lstStatus->viewport()->rect();
  EXPECT_TRUE(viewport.contains(myWindow->lstStatus->visualRect(status.index(200)).center()));

  QTest::mouseClick(myWindow->btnClear, Qt::LeftButton);
  EXPECT_EQ(status.rowCount(), 0);
}

TEST_F(WndMainTest, LaysItsControlsOutByTheirAnchors) {
  const auto positions = [&] {
    return std::vector<QRect>{myWindow->lstStatus->geometry(), myWindow->lstNetworks->geometry(),
                              myWindow->lstUsers->geometry(),  myWindow->btnClear->geometry(),
                              myWindow->btnAdmins->geometry(), myWindow->btnBans->geometry()};
  };
  EXPECT_THAT(positions(), ElementsAre(QRect(20, 261, 493, 252), QRect(20, 20, 218, 229),
                                       QRect(250, 20, 263, 229), QRect(20, 525, 80, 20),
                                       QRect(243, 525, 129, 20), QRect(384, 525, 129, 20)));
  myWindow->resize(myWindow->size() + QSize(100, 50));
  EXPECT_THAT(positions(), ElementsAre(QRect(20, 261, 593, 302), QRect(20, 20, 218, 229),
                                       QRect(250, 20, 363, 229), QRect(20, 575, 80, 20),
                                       QRect(243, 525, 129, 20), QRect(384, 525, 129, 20)));
}

TEST_F(WndMainTest, ClosingHidesOrMinimisesUntilTheProgramQuits) {
  myHasTray = false;
  EXPECT_FALSE(myWindow->close());
  EXPECT_TRUE(myWindow->isVisible());
  EXPECT_TRUE(myWindow->isMinimized());
  myHasTray = true;
  EXPECT_FALSE(myWindow->close());
  EXPECT_FALSE(myWindow->isVisible());
  TestClient ann(myWindow->sSocket->Port());
  EXPECT_TRUE(ann.LogIn("North", "secret", "Ann"));

  auto* exit = myWindow->findChild<QAction*>("FileQuit");
  ASSERT_NE(exit, nullptr);
  QTimer::singleShot(0, [&] { exit->trigger(); });
  EXPECT_EQ(QApplication::exec(), 0);
  EXPECT_TRUE(myWindow->close());
}
