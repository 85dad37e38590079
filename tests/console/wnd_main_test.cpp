#include "console/wnd_main.h"

#include <QTimer>

#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;

using WndMainTest = ConsoleTest;

TEST_F(WndMainTest, ShowsItsNetworksAndEachUserFromLoginToLogout) {
  EXPECT_THAT(RowTexts(myWindow->Networks()), ElementsAre("North", "So\\nuth"));
  EXPECT_TRUE(Shows("Listening..."));
  const auto ann = LoggedIn("Ann", "north");
  const auto ben = LoggedIn("<b>Ben\n</b>", "So\nuth");
  EXPECT_THAT(Users(), ElementsAre("Ann|North", "<b>Ben\\n</b>|So\\nuth"));
  ann->Abort();
  ASSERT_TRUE(QTest::qWaitFor([&] { return RowTexts(myWindow->Users()).size() == 1; }));
  EXPECT_THAT(RowTexts(myWindow->Users()), ElementsAre("<b>Ben\\n</b>|So\\nuth"));
}

TEST_F(WndMainTest, ShowsTheNewestLineUntilTheLogIsCleared) {
  StatusLogModel& status = myWindow->Status();
  for (int i = 0; i < 200; ++i)
    myApp.Listener().CallStatusMessage({std::to_string(i)});
  ASSERT_TRUE(QTest::qWaitFor([&] { return status.rowCount() == 201; }));
  EXPECT_TRUE(RowText(status, 200).ends_with("] 199"));
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
  EXPECT_EQ(myWindow->windowTitle(), "Corvane Server");
  EXPECT_EQ(myWindow->minimumSize(), QSize(64, 64));
  EXPECT_FALSE(myWindow->windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
  myWindow->resize(myWindow->size() + QSize(100, 50));
  EXPECT_THAT(positions(), ElementsAre(QRect(20, 261, 593, 302), QRect(20, 20, 218, 229),
                                       QRect(250, 20, 363, 229), QRect(20, 575, 80, 20),
                                       QRect(243, 525, 129, 20), QRect(384, 525, 129, 20)));
  QFont large = myWindow->font();
  large.setPointSize(18);
  myWindow->setFont(large);
  const auto textWidth = [](const QPushButton& button) {
    return button.fontMetrics().horizontalAdvance(button.text());
  };
  EXPECT_GT(myWindow->btnAdmins->width(), textWidth(*myWindow->btnAdmins));
  EXPECT_GT(myWindow->btnBans->geometry().left(), myWindow->btnAdmins->geometry().right());
  EXPECT_EQ(myWindow->btnBans->geometry().right(), 512);
}

TEST_F(WndMainTest, StartsInTheTrayOrMinimisedIfSet) {
  myApp.Settings().SetValue("StartHidden", "1");
  for (const bool hasTray : {true, false}) {
    wndMain window(myApp, [hasTray] { return hasTray; });
    window.Open();
    EXPECT_EQ(window.isVisible(), !hasTray);
    EXPECT_EQ(window.isMinimized(), !hasTray);
    EXPECT_TRUE(window.sSocket.IsListening());
    window.ShowWindow();
    EXPECT_TRUE(window.isVisible() && !window.isMinimized());
  }
}

TEST_F(WndMainTest, ClosingHidesOrMinimisesUntilTheProgramQuits) {
  myHasTray = false;
  EXPECT_FALSE(myWindow->close());
  EXPECT_TRUE(myWindow->isVisible());
  EXPECT_TRUE(myWindow->isMinimized());
  myHasTray = true;
  EXPECT_FALSE(myWindow->close());
  EXPECT_FALSE(myWindow->isVisible());
  LoggedIn("Ann");

  myWindow->ShowWindow();
  QTimer::singleShot(0, [this] { ChooseInMenuBar("&File", "E&xit"); });
  EXPECT_EQ(QApplication::exec(), 0);
  EXPECT_TRUE(myWindow->close());
}

}  // namespace
}  // namespace corvane
