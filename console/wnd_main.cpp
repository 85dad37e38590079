#include "console/wnd_main.h"

#include <utility>

#include <QCloseEvent>
#include <QDateTime>
#include <QGuiApplication>
#include <QMenuBar>

#include "console/anchors.h"
#include "server/app.h"
#include "server/client_socket.h"

namespace corvane {
namespace {

constexpr QSize kContentSize{533, 565};  // below the menu bar
constexpr QSize kMinimumSize{64, 64};

}  // namespace

wndMain::wndMain(App& app, std::function<bool()> hasTray)
    : sSocket(std::make_shared<MapSocket>(app.Loop(), app.serverdb(), app.Locations())),
      myApp(app),
      myHasTray(std::move(hasTray)) {
  setWindowTitle(QStringLiteral("Corvane Server"));
  setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                 Qt::WindowCloseButtonHint);
  BuildMenus();
  PlaceControls();
  setMinimumSize(kMinimumSize);
  resize(sizeHint());
  ConnectEvents();

  sSocket->SetPort(0);
  sSocket->SetMinimumSocketsAvailable(2);
  sSocket->SetMaximumSocketsConnected(10);
}

wndMain::~wndMain() {
  // The loop may hold the listener for a moment longer.
  sSocket->StatusMessage = nullptr;
  sSocket->UserLoggedIn = nullptr;
  sSocket->UserLoggedOut = nullptr;
}

void wndMain::Open() {
  show();
  myStatus.Clear();
  myNetworks.Clear();
  myUsers.Clear();
  myApp.LoadServerSocket(*sSocket, [this](const NetworkRef& network) { myNetworks.Add(network); });
}

void wndMain::closeEvent(QCloseEvent* event) {
  if (myApp.IsQuitting()) {
    event->accept();
    return;
  }
  if (qGuiApp->isSavingSession()) {
    event->accept();
    myApp.Quit();
    return;
  }
  event->ignore();
  if (myHasTray()) {
    hide();
  } else {
    showMinimized();
  }
}

void wndMain::BuildMenus() {
  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  QAction* FileQuit = file->addAction(QStringLiteral("E&xit"));
  FileQuit->setObjectName(QStringLiteral("FileQuit"));
  connect(FileQuit, &QAction::triggered, this, [this] { myApp.Quit(); });
}

void wndMain::PlaceControls() {
  auto* content = new Anchors(kContentSize, this);
  lstStatus = new ListBox(QStringLiteral("Status"), ListBox::Heading::None, content);
  lstNetworks = new ListBox(QStringLiteral("Networks"), ListBox::Heading::Shown, content);
  lstUsers = new ListBox(QStringLiteral("Users"), ListBox::Heading::Shown, content);
  btnClear = new QPushButton(QStringLiteral("Clear"), content);
  btnAdmins = new QPushButton(QStringLiteral("View Admins"), content);
  btnBans = new QPushButton(QStringLiteral("View Bans"), content);
  btnAdmins->setEnabled(false);
  btnBans->setEnabled(false);

  lstStatus->setModel(&myStatus);
  lstNetworks->setModel(&myNetworks);
  lstUsers->setModel(&myUsers);

  using A = Anchors;
  content->Add(lstStatus, {20, 261, 493, 252}, A::Left | A::Top | A::Right | A::Bottom);
  content->Add(lstNetworks, {20, 20, 218, 229}, A::Left | A::Top);
  content->Add(lstUsers, {250, 20, 263, 229}, A::Left | A::Top | A::Right);
  content->Add(btnClear, {20, 525, 80, 20}, A::Left | A::Bottom);
  // Not to the bottom edge: deliberate, they stay where they are when the window grows.
  content->Add(btnAdmins, {243, 525, 129, 20}, A::Left | A::Top);
  content->Add(btnBans, {384, 525, 129, 20}, A::Left | A::Top);
  setCentralWidget(content);
}

void wndMain::ConnectEvents() {
  sSocket->StatusMessage = [this](MapSocket& sender, const std::string& text) {
    sSocket_StatusMessage(sender, text);
  };
  sSocket->UserLoggedIn = [this](MapSocket& sender, const std::shared_ptr<ClientSocket>& client) {
    sSocket_UserLoggedIn(sender, client);
  };
  sSocket->UserLoggedOut = [this](MapSocket& sender, const std::shared_ptr<ClientSocket>& client) {
    sSocket_UserLoggedOut(sender, client);
  };
  connect(btnClear, &QPushButton::clicked, this, &wndMain::btnClear_Action);
  connect(&myStatus, &StatusLogModel::rowsInserted, lstStatus, &ListBox::scrollToBottom);
}

void wndMain::sSocket_StatusMessage(MapSocket&, const std::string& text) {
  const std::string prefix = StatusPrefix(QDateTime::currentDateTime());
  myStatus.Append(prefix, text);
  myOutput.WriteLine(prefix + text);
}

void wndMain::sSocket_UserLoggedIn(MapSocket&, const std::shared_ptr<ClientSocket>& client) {
  const NetworkRef& network = client->myNetwork;
  myUsers.LogIn(client->Username(), network ? network->NetworkName : std::string(), client);
}

void wndMain::sSocket_UserLoggedOut(MapSocket&, const std::shared_ptr<ClientSocket>& client) {
  const NetworkRef& network = client->myNetwork;
  myUsers.LogOut(client->Username(), network ? network->NetworkName : std::string());
}

void wndMain::btnClear_Action() {
  myStatus.Clear();
}

}  // namespace corvane
