#include "console/my_tray_item.h"

#include <string>

#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

using namespace corvane;

TEST(MyTrayItem, OffersWhatTheWindowsVisibilityAllows) {
  QWidget window;
  int quits = 0;
  MyTrayItem item(window, [&quits] { ++quits; });
  const auto choose = [&](int row) {
    Q_EMIT item.activated(QSystemTrayIcon::Trigger);
    EXPECT_TRUE(item.Menu().isVisible());
    QAction* action = item.Menu().actions().at(row);
    std::string text = action->text().toStdString();
    QTest::mouseClick(&item.Menu(), Qt::LeftButton, {},
                      item.Menu().actionGeometry(action).center());
    return text;
  };
  EXPECT_EQ(choose(0), "Show Window");
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(choose(0), "Hide Window");
  EXPECT_FALSE(window.isVisible());

  window.showMinimized();
  window.hide();
  EXPECT_EQ(choose(0), "Show Window");
  EXPECT_TRUE(window.isVisible());
  EXPECT_FALSE(window.isMinimized());
  EXPECT_EQ(quits, 0);
  EXPECT_EQ(choose(2), "Exit");
  EXPECT_EQ(quits, 1);
}
