#include "tests/map/map_fixture.h"

#include "framework/text.h"

namespace corvane::map {
namespace {

bool IsOwn(const QModelIndex& name) {
  return name.data(Qt::AccessibleTextRole).toString().endsWith(" (you)");
}

}  // namespace

using client::Connection;

void Type(QWidget* field, const QString& text) {
  field->setFocus();
  QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(field, Qt::Key_Delete);
  QTest::keyClicks(field, text);
}

void Click(QWidget* button) {
  QTest::mouseClick(button, Qt::LeftButton);
}

WindowTest::WindowTest() {
  MakeWindow();
}

void WindowTest::MakeWindow() {
  using std::chrono::milliseconds;
  Connection::Timing timing;
  timing.firstDelay = timing.maxDelay = milliseconds(1000);
  timing.refreshInterval = milliseconds(30'000);
  myWindow.emplace(myFolder.filePath("map.ini"), myFolder.filePath("cache"), timing);
  myWindow->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&*myWindow));
}

bool WindowTest::Reaches(Connection::State state) {
  return PumpUntil([&] { return State() == state; });
}

void WindowTest::Login(std::int32_t port, const QString& user, const QString& password,
                       const QString& network) {
  if (!IsOpen("ConnectDialog")) myWindow->actions->actConnect->trigger();
  auto* dialog = Opened<ConnectDialog>("ConnectDialog");
  Type(dialog->txtHost, "127.0.0.1");
  dialog->spnPort->setValue(port);
  Type(dialog->txtNetwork, network);
  Type(dialog->txtPassword, password);
  Type(dialog->txtUser, user);
  Click(dialog->btnConnect);
}

QDialog* WindowTest::FindDialog(const char* name) {
  QTest::qWait(0);
  for (QDialog* dialog : myWindow->findChildren<QDialog*>(QLatin1String(name))) {
    if (!dialog->isVisible()) continue;
    dialog->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
    return dialog;
  }
  return nullptr;
}

bool WindowTest::Shows(const QString& text) {
  return PumpUntil([&] { return myWindow->txtMessages->toPlainText().contains(text); });
}

bool WindowTest::ComesOnMap(QPointF place) {
  return PumpUntil([&] { return myWindow->map->viewport()->rect().contains(OnMap(place)); });
}

std::vector<std::string> WindowTest::Rows() {
  const QAbstractItemModel& model = *myWindow->pnlMembers->lstMembers->model();
  std::vector<std::string> rows;
  for (int row = 0; row < model.rowCount(); ++row) {
    if (IsOwn(model.index(row, MembersModel::kName))) continue;
    std::string text;
    for (int column = 0; column < MembersModel::kNews; ++column) {
      if (column > 0) text += '|';
      text += TextFromDisplay(model.index(row, column).data().toString());
    }
    rows.push_back(text);
  }
  return rows;
}

bool WindowTest::RowsAre(const std::vector<std::string>& rows) {
  const bool are = PumpUntil([&] { return Rows() == rows; });
  if (!are) {
    EXPECT_EQ(Rows(), rows);
  }
  return are;
}

QPoint WindowTest::CellAt(int row) {
  const QTableView& list = *myWindow->pnlMembers->lstMembers;
  const auto nameIn = [&](int at) { return list.model()->index(at, MembersModel::kName); };
  for (int at = 0; at <= row; ++at)
    row += IsOwn(nameIn(at));
  return list.visualRect(nameIn(row)).center();
}

MapTest::MapTest() {
  myServer.AddNetwork("North");
  myServer.Query("INSERT INTO admins (name, address, network) VALUES ('Ann','127.0.0.1','North')");
  Login(myServer.Port());
  EXPECT_TRUE(Reaches(Connection::State::Online));
  EXPECT_TRUE(PumpUntil([&] { return myWindow->Wire().IsAdministrator(); }));
  // The offscreen platform does not activate it again after the dialog.
  myWindow->activateWindow();
  EXPECT_TRUE(QTest::qWaitForWindowActive(&*myWindow));
  myWindow->map->setFocus();
}

std::unique_ptr<TestClient> MapTest::Member(const std::string& name, const std::string& report) {
  auto client = std::make_unique<TestClient>(myServer.Port());
  EXPECT_TRUE(client->Login("North", "secret", name));
  client->Send(4, report);
  EXPECT_TRUE(PumpUntil([&] { return Find(name) != nullptr; })) << name;
  return client;
}

bool MapTest::Knows(const std::string& name, const client::Report& report) {
  return PumpUntil([&] { return Find(name) != nullptr && Find(name)->report == report; });
}

}  // namespace corvane::map
