#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <QDialog>
#include <QTemporaryDir>
#include <QTest>
#include <gmock/gmock.h>

#include "map/map_window.h"
#include "tests/support/test_client.h"
#include "tests/support/test_server.h"

namespace corvane::map {

// Replaces the field's text by typing.
void Type(QWidget* field, const QString& text);

void Click(QWidget* button);

// The program's window, not logged in.
class WindowTest : public testing::Test {
 protected:
  WindowTest();

  void MakeWindow();
  client::Connection::State State() { return myWindow->Wire().CurrentState(); }
  bool Reaches(client::Connection::State state);
  // Fills the dialog and confirms it.
  void Login(std::int32_t port, const QString& user = "Ann", const QString& password = "secret",
             const QString& network = "North");

  // The open dialog of that name; throws if none is open.
  template <typename DialogType>
  DialogType* Opened(const char* name) {
    QDialog* dialog = FindDialog(name);
    if (dialog == nullptr) throw std::logic_error(std::string(name) + " is not open");
    return static_cast<DialogType*>(dialog);
  }
  bool IsOpen(const char* name) { return FindDialog(name) != nullptr; }

  // Whether the text appears in the messages.
  bool Shows(const QString& text);

  // The others' rows in the list, with "|" between cells, without the column of the last news.
  std::vector<std::string> Rows();
  bool RowsAre(const std::vector<std::string>& rows);
  // Where the list shows the name in that row of the others.
  QPoint CellAt(int row);
  // Where the map shows the place.
  QPoint OnMap(QPointF place) { return myWindow->map->mapFromScene(place); }
  // Waits until the map shows the place, as it does by itself after the first report.
  bool ComesOnMap(QPointF place);
  // The map, painted now.
  QImage Painted() { return myWindow->map->viewport()->grab().toImage(); }

  QTemporaryDir myFolder;
  std::optional<MapWindow> myWindow;

 private:
  QDialog* FindDialog(const char* name);
};

// A server with the network "North" and its administrator Ann, and the window logged in as Ann.
class MapTest : public WindowTest {
 protected:
  MapTest();

  // Another member of the network, which has reported.
  std::unique_ptr<TestClient> Member(const std::string& name, const std::string& report);
  const client::Member* Find(const std::string& name) {
    return myWindow->Wire().Others().Find(name);
  }
  // Whether the window knows the member's report.
  bool Knows(const std::string& name, const client::Report& report);

  TestServer myServer;
};

}  // namespace corvane::map
