#include "console/list_box.h"

#include <QApplication>
#include <QHelpEvent>
#include <QScrollBar>
#include <QStringListModel>
#include <QTest>
#include <QToolTip>
#include <gtest/gtest.h>

#include "console/users_model.h"

using namespace corvane;

TEST(ListBox, AClickOrAKeySelectsAWholeRow) {
  UsersModel users;
  for (const char* name : {"Ann", "Ben", "Cas"})
    users.LogIn(name, "North", {});
  ListBox list("Users", ListBox::Heading::Shown, nullptr);
  list.setModel(&users);
  list.resize(263, 229);
  list.show();
  EXPECT_EQ(list.SelectedRow(), -1);

  const QPoint place = list.visualRect(users.index(1, 1)).center();
  QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, place);
  EXPECT_EQ(list.SelectedRow(), 1);
  EXPECT_EQ(list.selectionModel()->selectedIndexes().size(), 2);
  QTest::keyClick(&list, Qt::Key_Down);
  EXPECT_EQ(list.SelectedRow(), 2);
}

TEST(ListBox, ColumnsFillTheWidthInTheOperatorsShares) {
  UsersModel users;
  ListBox list("Users", ListBox::Heading::Shown, nullptr);
  list.setModel(&users);
  list.resize(300, 200);
  list.show();
  const auto share = [&](int column) {
    return double(list.columnWidth(column)) / list.viewport()->width();
  };
  EXPECT_NEAR(share(0), 0.5, 0.01);
  list.setColumnWidth(0, 60);
  const double chosen = share(0);
  for (const int width : {310, 333, 471, 600, 287}) {
    list.resize(width, 200);
    EXPECT_NEAR(share(0), chosen, 0.01);
    EXPECT_EQ(list.columnWidth(0) + list.columnWidth(1), list.viewport()->width());
    EXPECT_FALSE(list.horizontalScrollBar()->isVisible());
  }
}

TEST(ListBox, OnlyACutOffTextHasATooltipAndItIsNoMarkup) {
  QStringListModel lines({"short", QString("<b>long</b> ").repeated(30)});
  ListBox list("Status", ListBox::Heading::None, nullptr);
  list.setModel(&lines);
  list.resize(200, 100);
  list.show();
  const auto tipAt = [&](int row) {
    const QPoint place = list.visualRect(lines.index(row)).center();
    QHelpEvent help(QEvent::ToolTip, place, list.viewport()->mapToGlobal(place));
    QApplication::sendEvent(list.viewport(), &help);
    return QToolTip::text();
  };
  EXPECT_EQ(tipAt(0), "");
  EXPECT_TRUE(tipAt(1).startsWith("<p>&lt;b&gt;long"));
}
