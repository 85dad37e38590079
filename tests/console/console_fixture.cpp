#include "tests/console/console_fixture.h"

#include <algorithm>

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenuBar>

#include "framework/text.h"

namespace corvane {

std::string RowText(const QAbstractItemModel& model, int row) {
  std::string text;
  for (int column = 0; column < model.columnCount(); ++column) {
    if (column > 0) text += '|';
    text += TextFromDisplay(model.index(row, column).data().toString());
  }
  return text;
}

std::vector<std::string> RowTexts(const QAbstractItemModel& model) {
  std::vector<std::string> rows;
  for (int row = 0; row < model.rowCount(); ++row)
    rows.push_back(RowText(model, row));
  return rows;
}

void ClickRow(const ListBox& list, int row, Qt::KeyboardModifiers modifiers) {
  const QPoint place = list.visualRect(list.model()->index(row, 0)).center();
  QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers, place);
}

void Type(QWidget* field, const QString& text) {
  field->setFocus();
  QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(field, Qt::Key_Delete);
  QTest::keyClicks(field, text);
}

void Click(QWidget* button) {
  // Through the window, which a modal dialog may block.
  QTest::mouseClick(button->window()->windowHandle(), Qt::LeftButton, {},
                    button->mapTo(button->window(), button->rect().center()));
}

QMenu* OpenedMenu() {
  return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

std::vector<std::string> Captions() {
  std::vector<std::string> captions;
  const QMenu* menu = OpenedMenu();
  if (menu == nullptr) return captions;
  for (const QAction* item : menu->actions()) {
    const std::string caption = item->isSeparator() ? "-" : TextFromDisplay(item->text());
    captions.push_back(caption + (item->isEnabled() ? "" : "?"));
  }
  return captions;
}

void Choose(const QString& caption) {
  QMenu* menu = OpenedMenu();
  ASSERT_NE(menu, nullptr);
  const QList<QAction*> items = menu->actions();
  const auto item = std::find_if(items.begin(), items.end(), [&](const QAction* candidate) {
    return candidate->text() == caption;
  });
  ASSERT_NE(item, items.end()) << caption.toStdString();
  QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(*item).center());
}

std::vector<QDialog*> Dialogs() {
  std::vector<QDialog*> dialogs;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (auto* dialog = qobject_cast<QDialog*>(window)) dialogs.push_back(dialog);
  }
  return dialogs;
}

ConsoleTest::ConsoleTest() {
  myWindow.emplace(myApp, [this] { return myHasTray; });
  // Shows the rows of users at once.
  myRows = myApp.Listener().UserLoggedIn.Connect([this](auto&&...) { myWindow->Users().Update(); });
  myWindow->Open();
  EXPECT_TRUE(QTest::qWaitForWindowActive(&*myWindow));
}

bool ConsoleTest::Shows(const std::string& line) {
  return PumpUntil([&] {
    const std::vector<std::string> rows = RowTexts(myWindow->Status());
    return std::any_of(rows.begin(), rows.end(),
                       [&](const std::string& row) { return row.ends_with("] " + line); });
  });
}

std::vector<std::string> ConsoleTest::Users() {
  myWindow->Users().Update();
  return RowTexts(myWindow->Users());
}

void ConsoleTest::OpenContextMenu(ListBox& list, int row) {
  // Pending events of an earlier menu would close this one.
  QTest::qWait(0);
  if (row >= 0) {
    const QPoint place = list.visualRect(list.model()->index(row, 0)).center();
    QTest::mouseClick(list.viewport(), Qt::RightButton, {}, place);
    QContextMenuEvent click(QContextMenuEvent::Mouse, place, list.viewport()->mapToGlobal(place));
    QApplication::sendEvent(list.viewport(), &click);
  } else {
    QTest::keyClick(&list, Qt::Key_F10, Qt::ShiftModifier);
  }
}

void ConsoleTest::ChooseOn(ListBox& list, int row, const QString& caption) {
  OpenContextMenu(list, row);
  Choose(caption);
}

void ConsoleTest::ChooseInMenuBar(const QString& menu, const QString& caption) {
  QMenuBar* bar = myWindow->menuBar();
  for (QAction* title : bar->actions()) {
    if (title->text() == menu)
      QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(title).center());
  }
  Choose(caption);
}

bool ConsoleTest::NoneIsOpen() {
  return PumpUntil([] { return Dialogs().empty(); });
}

QDialog* ConsoleTest::FindDialog(const char* name) {
  QTest::qWait(0);
  for (QDialog* dialog : Dialogs()) {
    if (dialog->objectName() != QLatin1String(name) || !dialog->isVisible()) continue;
    // The offscreen platform may activate another window last.
    dialog->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
    return dialog;
  }
  return nullptr;
}

}  // namespace corvane
