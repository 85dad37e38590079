#include "console/my_tray_item.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

using namespace corvane;
using testing::ElementsAre;

namespace {

class MyTrayItemTest : public testing::Test {
 protected:
  std::vector<std::string> OpenedMenu() {
    Q_EMIT myItem.activated(QSystemTrayIcon::Trigger);
    EXPECT_TRUE(myItem.Menu().isVisible());
    std::vector<std::string> items;
    for (const QAction* action : myItem.Menu().actions()) {
      items.push_back(action->isSeparator() ? "-" : action->text().toStdString());
    }
    return items;
  }

  void Choose(int item) {
    QMenu& menu = myItem.Menu();
    QTest::mouseClick(&menu, Qt::LeftButton, {},
                      menu.actionGeometry(menu.actions().at(item)).center());
  }

  QWidget myWindow;
  int myQuits = 0;
  MyTrayItem myItem{myWindow, [this] { ++myQuits; }};
};

}  // namespace

TEST_F(MyTrayItemTest, OffersWhatTheWindowsVisibilityAllows) {
  EXPECT_THAT(OpenedMenu(), ElementsAre("Show Window", "-", "Exit"));
  Choose(0);
  EXPECT_TRUE(myWindow.isVisible());
  EXPECT_THAT(OpenedMenu(), ElementsAre("Hide Window", "-", "Exit"));
  Choose(0);
  EXPECT_FALSE(myWindow.isVisible());
  EXPECT_THAT(OpenedMenu(), ElementsAre("Show Window", "-", "Exit"));
  EXPECT_EQ(myQuits, 0);
}

TEST_F(MyTrayItemTest, ShowBringsBackAlsoAWindowThatWasHiddenMinimised) {
  myWindow.showMinimized();
  myWindow.hide();
  OpenedMenu();
  Choose(0);
  EXPECT_TRUE(myWindow.isVisible());
  EXPECT_FALSE(myWindow.isMinimized());
}

TEST_F(MyTrayItemTest, ExitQuits) {
  OpenedMenu();
  Choose(2);
  EXPECT_EQ(myQuits, 1);
}
