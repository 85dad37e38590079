#pragma once

#include <algorithm>
#include <stdexcept>

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include "console/wnd_main.h"
#include "framework/text.h"
#include "tests/app/app_fixture.h"

namespace corvane {

// The texts of a row's cells, "|" between them.
inline std::string RowText(const QAbstractItemModel& model, int row) {
  QStringList cells;
  for (int column = 0; column < model.columnCount(); ++column)
    cells += model.index(row, column).data().toString();
  return TextFromDisplay(cells.join('|'));
}
inline std::vector<std::string> RowTexts(const QAbstractItemModel& model) {
  std::vector<std::string> rows;
  for (int row = 0; row < model.rowCount(); ++row)
    rows.push_back(RowText(model, row));
  return rows;
}

// Clicks on the row of the list.
inline void ClickRow(const ListBox& list, int row,
                     Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  const QPoint place = list.visualRect(list.model()->index(row, 0)).center();
  QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers, place);
}

// Replaces the field's text by typing.
inline void Type(QWidget* field, const QString& text) {
  field->setFocus();
  QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(field, Qt::Key_Delete);
  QTest::keyClicks(field, text);
}

inline void Click(QWidget* button) {
  // Through the window, which a modal dialog may block.
  QTest::mouseClick(button->window()->windowHandle(), Qt::LeftButton, {},
                    button->mapTo(button->window(), button->rect().center()));
}

// The open menu, or null.
inline QMenu* OpenedMenu() {
  return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}
// Its captions in order, "-" for a separator; a question mark follows disabled items.
inline std::vector<std::string> Captions() {
  std::vector<std::string> captions;
  const QMenu* menu = OpenedMenu();
  if (menu == nullptr) return captions;
  for (const QAction* item : menu->actions()) {
    const std::string caption = item->isSeparator() ? "-" : TextFromDisplay(item->text());
    captions.push_back(caption + (item->isEnabled() ? "" : "?"));
  }
  return captions;
}
// Clicks on the item of the open menu.
inline void Choose(const QString& caption) {
  QMenu* menu = OpenedMenu();
  ASSERT_NE(menu, nullptr);
  for (QAction* item : menu->actions()) {
    if (item->text() != caption) continue;
    return QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(item).center());
  }
  FAIL() << caption.toStdString();
}

// All dialogs, shown or not.
inline std::vector<QDialog*> Dialogs() {
  std::vector<QDialog*> dialogs;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (auto* dialog = qobject_cast<QDialog*>(window)) dialogs.push_back(dialog);
  }
  return dialogs;
}

// A server with the operator's window.
class ConsoleTest : public AppFixture {
 protected:
  ConsoleTest() {
    myWindow.emplace(myApp, [this] { return myHasTray; });
    // Shows the rows of users at once.
    myRows =
        myApp.Listener().UserLoggedIn.Connect([this](auto&&...) { myWindow->Users().Update(); });
    myWindow->Open();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&*myWindow));
  }

  // The rows of the users' list, "name|network".
  std::vector<std::string> Users() {
    myWindow->Users().Update();
    return RowTexts(myWindow->Users());
  }
  // Waits until the status log has the line, ignoring its time; returns whether it does.
  bool Shows(const std::string& line) {
    return PumpUntil([&] {
      const std::vector<std::string> rows = RowTexts(myWindow->Status());
      return std::any_of(rows.begin(), rows.end(),
                         [&](const std::string& row) { return row.ends_with("] " + line); });
    });
  }
  // Opens the list's context menu with a right click on the row, or by keyboard if it is -1.
  static void OpenContextMenu(ListBox& list, int row) {
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
  // The same, and clicks on an item.
  static void ChooseOn(ListBox& list, int row, const QString& caption) {
    OpenContextMenu(list, row);
    Choose(caption);
  }
  // Clicks on an item of the menu bar's menu.
  void ChooseInMenuBar(const QString& menu, const QString& caption) {
    QMenuBar* bar = myWindow->menuBar();
    for (QAction* title : bar->actions()) {
      if (title->text() == menu)
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(title).center());
    }
    Choose(caption);
  }

  // The open dialog of that name, the name of its class; throws if it is not open.
  template <typename DialogType>
  DialogType* Opened(const char* name) {
    QDialog* dialog = FindDialog(name);
    if (dialog == nullptr) throw std::logic_error(std::string(name) + " is not open");
    return static_cast<DialogType*>(dialog);
  }
  bool IsOpen(const char* name) { return FindDialog(name) != nullptr; }
  // Waits until all dialogs are closed; returns whether they are.
  bool NoneIsOpen() {
    return PumpUntil([] { return Dialogs().empty(); });
  }

  bool myHasTray = true;
  std::optional<wndMain> myWindow;

 private:
  SignalConnection myRows;
  QDialog* FindDialog(const char* name) {
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
};

}  // namespace corvane
