#include "console/my_tray_item.h"

#include <QMessageBox>
#include <QTimer>

#include "console/message_boxes.h"
#include "console/wnd_settings.h"
#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using MyTrayItemTest = ConsoleTest;

TEST_F(MyTrayItemTest, OffersToHideOrShowTheWindow) {
  int quits = 0;
  MyTrayItem item(*myWindow, [&quits] { ++quits; });
  EXPECT_EQ(item.toolTip(), QStringLiteral("Corvane Server (classic rules)"));
  const auto choose = [&](int row) {
    Q_EMIT item.activated(QSystemTrayIcon::Trigger);
    EXPECT_TRUE(item.Menu().isVisible());
    QAction* action = item.Menu().actions().at(row);
    std::string text = action->text().toStdString();
    QTest::mouseClick(&item.Menu(), Qt::LeftButton, {},
                      item.Menu().actionGeometry(action).center());
    return text;
  };
  myWindow->move(70, 90);
  ChooseInMenuBar("&File", "Settings...");
  auto* settings = Opened<wndSettings>("wndSettings");
  settings->move(130, 170);
  EXPECT_EQ(choose(0), "Hide Window");
  EXPECT_FALSE(myWindow->isVisible() || settings->isVisible());
  EXPECT_EQ(choose(0), "Show Window");
  EXPECT_TRUE(myWindow->isVisible() && settings->isVisible());
  EXPECT_EQ(myWindow->pos(), QPoint(70, 90));
  EXPECT_EQ(settings->pos(), QPoint(130, 170));
  EXPECT_TRUE(QTest::qWaitForWindowActive(settings));
  Click(settings->btnCancel);
  ASSERT_TRUE(NoneIsOpen());

  myWindow->showMinimized();
  EXPECT_EQ(choose(0), "Hide Window");
  EXPECT_EQ(choose(0), "Show Window");
  EXPECT_TRUE(myWindow->isVisible());
  EXPECT_FALSE(myWindow->isMinimized());
  EXPECT_EQ(quits, 0);
  EXPECT_EQ(choose(2), "Exit");
  EXPECT_EQ(quits, 1);
}

TEST_F(MyTrayItemTest, HiddenQuestionIsStillAsked) {
  QTimer::singleShot(0, [this] {
    myWindow->HideWindow();
    // In a later turn of the event loop.
    QTimer::singleShot(0, [this] {
      myWindow->ShowWindow();
      const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      Click(box->button(QMessageBox::Yes));
    });
  });
  EXPECT_EQ(ShowMessageBox({MessageBox::Kind::Question, "Sure", "Sure?"}), MessageBox::Answer::Yes);
}

}  // namespace
}  // namespace corvane
