#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <QDialog>
#include <QMenu>
#include <QTest>

#include "console/wnd_main.h"
#include "tests/app/app_fixture.h"

namespace corvane {

// The texts of a row's cells, "|" between them.
std::string RowText(const QAbstractItemModel& model, int row);
std::vector<std::string> RowTexts(const QAbstractItemModel& model);

// Clicks on the row of the list.
void ClickRow(const ListBox& list, int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

// Replaces the field's text by typing.
void Type(QWidget* field, const QString& text);

void Click(QWidget* button);

// The open menu, or null.
QMenu* OpenedMenu();
// Its captions in order, "-" for a separator; a question mark follows disabled items.
std::vector<std::string> Captions();
// Clicks on the item of the open menu.
void Choose(const QString& caption);

// All dialogs, shown or not.
std::vector<QDialog*> Dialogs();

// A server with the operator's window.
class ConsoleTest : public AppFixture {
 protected:
  ConsoleTest();

  // The rows of the users' list, "name|network".
  std::vector<std::string> Users();
  // Waits until the status log has the line, ignoring its time; returns whether it does.
  bool Shows(const std::string& line);
  // Opens the list's context menu with a right click on the row, or by keyboard if it is -1.
  static void OpenContextMenu(ListBox& list, int row);
  // The same, and clicks on an item.
  static void ChooseOn(ListBox& list, int row, const QString& caption);
  // Clicks on an item of the menu bar's menu.
  void ChooseInMenuBar(const QString& menu, const QString& caption);

  // The open dialog of that name, the name of its class; throws if it is not open.
  template <typename DialogType>
  DialogType* Opened(const char* name) {
    QDialog* dialog = FindDialog(name);
    if (dialog == nullptr) throw std::logic_error(std::string(name) + " is not open");
    return static_cast<DialogType*>(dialog);
  }
  bool IsOpen(const char* name) { return FindDialog(name) != nullptr; }
  // Waits until all dialogs are closed; returns whether they are.
  bool NoneIsOpen();

  bool myHasTray = true;
  std::optional<wndMain> myWindow;

 private:
  SignalConnection myRows;
  QDialog* FindDialog(const char* name);
};

}  // namespace corvane
