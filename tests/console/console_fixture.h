#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <QDialog>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>
#include <gmock/gmock.h>

#include "app/app.h"
#include "console/wnd_main.h"
#include "server/client_socket.h"
#include "tests/support/other_program.h"
#include "tests/support/test_client.h"
#include "tests/support/web_server.h"

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

// A server with the operator's window on the networks "North" and "So\nuth", both with the
// password "secret" and five seats.
class ConsoleTest : public testing::Test {
 protected:
  explicit ConsoleTest(bool isHardened = false);

  // The rows of the users' list, "name|network".
  std::vector<std::string> Users();
  // Whether the status log comes to hold the line, its time aside.
  bool Shows(const std::string& line);
  std::string Query(const std::string& statements);
  // A client that is logged in and has its row.
  std::unique_ptr<TestClient> LoggedIn(const std::string& user,
                                       const std::string& network = "North",
                                       const char* from = "127.0.0.1");

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

  QTemporaryDir myFolder;
  WebServer myWebServer;
  bool myHasTray = true;
  // What the operator was told, "title? text" where it was a question, and what he answers.
  std::vector<std::string> myBoxes;
  MessageBox::Answer myAnswer = MessageBox::Answer::OK;
  App myApp{myFolder.path(), [this](const MessageBox& box) {
              const bool asks = box.kind == MessageBox::Kind::Question;
              myBoxes.push_back(asks ? box.title + "? " + box.text : box.text);
              return myAnswer;
            }};
  std::optional<wndMain> myWindow;

 private:
  QDialog* FindDialog(const char* name);
};

}  // namespace corvane
