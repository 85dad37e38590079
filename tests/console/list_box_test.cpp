#include "console/list_box.h"

#include <QToolTip>

#include "console/wnd_conn_info.h"
#include "console/wnd_edit_network.h"
#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;

using ListBoxTest = ConsoleTest;

TEST_F(ListBoxTest, CurrentRowIsMarkedWhetherSelectedOrNot) {
  ListBox& list = *myWindow->lstNetworks;
  // Painting pauses for a moment after rows were added.
  ASSERT_TRUE(PumpUntil([&list] { return list.viewport()->updatesEnabled(); }));
  const auto picture = [&list](QWidget* focused) {
    focused->setFocus();
    return list.grab().toImage();
  };
  EXPECT_NE(picture(&list), picture(myWindow->btnClear));
  QTest::keyClick(&list, Qt::Key_Down);
  EXPECT_EQ(list.SelectedRow(), 0);
  EXPECT_NE(picture(&list), picture(myWindow->btnClear));
}

TEST_F(ListBoxTest, KeysAndDoubleClicksActLikeTheMenus) {
  const auto ann = LoggedIn("Ann");
  EXPECT_TRUE(myWindow->lstUsers->viewport()->updatesEnabled())
      << "the first row is painted at once";
  ListBox& networks = *myWindow->lstNetworks;
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Delete})
    QTest::keyClick(&networks, key);
  EXPECT_TRUE(NoneIsOpen());
  EXPECT_TRUE(myBoxes.empty());

  networks.setFocus();
  QTest::keyClick(&networks, Qt::Key_Down);
  EXPECT_EQ(QToolTip::text(), "<p>1 of 5 users are on</p>");
  QTest::keyClick(&networks, Qt::Key_Return);
  auto* edit = Opened<wndEditNetwork>("wndEditNetwork");
  EXPECT_EQ(edit->txtName->text(), "North");
  edit->chkEnable->click();
  Click(edit->btnOK);
  ASSERT_TRUE(NoneIsOpen());
  QTest::keyClick(&networks, Qt::Key_End);
  QTest::keyClick(&networks, Qt::Key_Home);
  EXPECT_EQ(QToolTip::text(), "<p>Disabled, 1 of 5 users are on</p>");
  QTest::keyClick(&networks, Qt::Key_Delete);
  EXPECT_THAT(myBoxes,
              ElementsAre("Delete Network? Are you sure you wish to delete this network?"));

  ListBox& users = *myWindow->lstUsers;
  ClickRow(users, 0);
  QTest::mouseDClick(users.viewport(), Qt::LeftButton, {},
                     users.visualRect(users.model()->index(0, 1)).center());
  EXPECT_TRUE(IsOpen("wndConnInfo"));
}

}  // namespace
}  // namespace corvane
