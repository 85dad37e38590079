#include "console/edit_menu.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>

#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using EditMenuTest = ConsoleTest;

TEST_F(EditMenuTest, ActsOnTheTextFieldWithTheFocus) {
  auto* field = new QLineEdit(&*myWindow);
  field->setGeometry(20, 60, 200, 30);
  field->show();
  field->setFocus();
  QTest::keyClicks(field, "map");
  const struct {
    const char* caption;
    const char* text;
  } steps[] = {{"Select &All", "map"}, {"Cu&t", ""},    {"&Paste", "map"}, {"&Paste", "mapmap"},
               {"&Undo", "map"},       {"&Undo", ""},   {"&Undo", "map"},  {"Select &All", "map"},
               {"&Copy", "map"},       {"&Delete", ""}, {"&Paste", "map"}};
  int number = 0;
  for (const auto& step : steps) {
    ChooseInMenuBar("&Edit", step.caption);
    EXPECT_EQ(field->text(), step.text) << ++number << " " << step.caption;
  }
  QMenu menu;
  FillEditMenu(menu);
  std::vector<std::string> shortcuts;
  for (const QAction* item : menu.actions())
    shortcuts.push_back(item->shortcut().toString().toStdString());
  EXPECT_THAT(shortcuts,
              testing::ElementsAre("Ctrl+Z", "", "Ctrl+X", "Ctrl+C", "Ctrl+V", "", "", "Ctrl+A"));
}

TEST_F(EditMenuTest, CopiesTheSelectedRowsOfAList) {
  for (const std::string line : {"one", "two", "three"})
    myApp.Listener().CallStatusMessage({line});
  ASSERT_TRUE(Shows("three"));
  const StatusLogModel& status = myWindow->Status();
  ClickRow(*myWindow->lstStatus, 1);
  ClickRow(*myWindow->lstStatus, 3, Qt::ControlModifier);
  const std::string both = RowText(status, 1) + "\n" + RowText(status, 3);
  ChooseInMenuBar("&Edit", "&Copy");
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), both);
  ChooseInMenuBar("&Edit", "Select &All");
  QTest::keyClick(myWindow->lstStatus, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(),
            RowText(status, 0) + "\n" + RowText(status, 1) + "\n" + RowText(status, 2) + "\n" +
                RowText(status, 3));

  // In a list without a selection no item is enabled.
  myWindow->lstNetworks->setFocus();
  ChooseInMenuBar("&Edit", "&Copy");
  for (QAction* item : OpenedMenu()->actions())
    EXPECT_TRUE(item->isSeparator() || !item->isEnabled()) << item->text().toStdString();
}

}  // namespace
}  // namespace corvane
