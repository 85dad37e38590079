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

// Types the text in place of what the field holds.
void Type(QWidget* field, const QString& text);

void Click(QWidget* button);

// The menu that is open; none if none is.
QMenu* OpenedMenu();
// Its captions in order, "-" for a separator, with a question mark behind what is disabled.
std::vector<std::string> Captions();
// Clicks on the item of the menu that is open.
void Choose(const QString& caption);

// All that there are, shown or not.
std::vector<QDialog*> Dialogs();

// A server with the operator's window.
class ConsoleTest : public AppFixture {
 protected:
  ConsoleTest();

  // The rows of the users' list, "name|network".
  std::vector<std::string> Users();
  // Whether the status log comes to hold the line, its time aside.
  bool Shows(const std::string& line);
  // Opens the list's context menu with a right click on the row, or by key where it is -1.
  static void OpenContextMenu(ListBox& list, int row);
  // The same, and clicks on an item.
  static void ChooseOn(ListBox& list, int row, const QString& caption);
  // Clicks on an item of the menu bar's menu.
  void ChooseInMenuBar(const QString& menu, const QString& caption);

  // The open dialog of that name, which is its class's; throws if none is open.
  template <typename DialogType>
  DialogType* Opened(const char* name) {
    QDialog* dialog = FindDialog(name);
    if (dialog == nullptr) throw std::logic_error(std::string(name) + " is not open");
    return static_cast<DialogType*>(dialog);
  }
  bool IsOpen(const char* name) { return FindDialog(name) != nullptr; }
  // Whether no dialog is open; lets a closed one destroy itself.
  bool NoneIsOpen();

  bool myHasTray = true;
  std::optional<wndMain> myWindow;

 private:
  SignalConnection myRows;
  QDialog* FindDialog(const char* name);
};

}  // namespace corvane
