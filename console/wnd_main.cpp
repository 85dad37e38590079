#include "console/wnd_main.h"

#include <algorithm>
#include <functional>
#include <tuple>
#include <utility>

#include <QApplication>
#include <QCloseEvent>
#include <QMenuBar>

#include "app/app.h"
#include "console/anchors.h"
#include "console/edit_menu.h"
#include "console/wnd_add_network.h"
#include "console/wnd_ban.h"
#include "console/wnd_conn_info.h"
#include "console/wnd_edit_network.h"
#include "console/wnd_kick.h"
#include "console/wnd_message.h"
#include "console/wnd_settings.h"
#include "console/wnd_view_admins.h"
#include "console/wnd_view_bans.h"
#include "framework/text.h"
#include "platform/network_interfaces.h"
#include "server/client_socket.h"
#include "server/setting.h"
#include "updater/update_platform.h"
#include "updater/updater_window.h"

namespace corvane {
namespace {

constexpr QSize kContentSize{533, 565};  // below the menu bar
constexpr QSize kMinSize{64, 64};

constexpr QLatin1String kAddNetwork("Add Network");
constexpr QLatin1String kEditNetwork("Edit Network");
constexpr QLatin1String kDeleteNetwork("Delete Network");
constexpr QLatin1String kDisconnectAll("Disconnect All");
constexpr QLatin1String kConnectionInfo("Connection Info");
constexpr QLatin1String kKickUser("Kick User");
constexpr QLatin1String kBanUser("Ban User");
constexpr QLatin1String kForceDisconnect("Force Disconnect");
constexpr QLatin1String kMakeAdmin("Make Admin");

// Keeps the caption as data, since a desktop may insert mnemonics into the text.
QAction* AddItem(QMenu& menu, QLatin1String caption) {
  QAction* item = menu.addAction(caption);
  item->setData(QString(caption));
  return item;
}

}  // namespace

wndMain::wndMain(App& app, std::function<bool()> hasTray)
    : sSocket(app.Listener()), myApp(app), myOperator(app.Op()), myHasTray(std::move(hasTray)) {
  setWindowTitle(QStringLiteral("Corvane Server"));
  setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                 Qt::WindowCloseButtonHint);
  BuildMenus();
  PlaceControls();
  setMinimumSize(kMinSize);
  resize(sizeHint());
  ConnectEvents();
}

wndMain::~wndMain() {
  delete myUpdaterWindow;
}

void wndMain::Open() {
  if (!IsOn(myApp.Settings().GetValue("StartHidden", "0"))) {
    show();
  } else if (!myHasTray()) {
    showMinimized();
  }
  myStatus.Clear();
  myNetworks.Clear();
  myUsers.Clear();
  myApp.LoadServerSocket();
}

void wndMain::closeEvent(QCloseEvent* event) {
  if (myApp.IsQuitting()) {
    event->accept();
    return;
  }
  if (qApp->isSavingSession()) {
    event->accept();
    myOperator.QuitFor("end of the session");
    return;
  }
  event->ignore();
  if (myHasTray()) {
    HideWindow();
  } else {
    showMinimized();
  }
}

void wndMain::BuildMenus() {
  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  const auto add = [&](const char* name, const char* caption, auto act) {
    QAction* item = file->addAction(QString(caption));
    item->setObjectName(QLatin1String(name));
    connect(item, &QAction::triggered, this, act);
  };
  const auto addSeparator = [file](const char* name) {
    file->addSeparator()->setObjectName(QLatin1String(name));
  };
  add("FileSettings", "Settings...", &wndMain::FileSettings);
  add("FileSendMessage", "Send Message", &wndMain::FileSendMessage);
  addSeparator("UntitledSeparator0");
  add("FileCheckForUpdates", "Check For Updates...", &wndMain::FileCheckForUpdates);
  addSeparator("UntitledSeparator");
  add("FileQuit", "E&xit", [this] { myOperator.Quit(); });
  FillEditMenu(*menuBar()->addMenu(QStringLiteral("&Edit")));
}

void wndMain::PlaceControls() {
  auto* content = myContent = new Anchors(kContentSize, this);
  lstStatus = new ListBox(QStringLiteral("Status"), ListBox::Heading::None,
                          ListBox::Selection::Several, content);
  lstNetworks = new ListBox(QStringLiteral("Networks"), ListBox::Heading::Shown,
                            ListBox::Selection::One, content);
  lstUsers = new ListBox(QStringLiteral("Users"), ListBox::Heading::Shown, ListBox::Selection::One,
                         content);
  btnClear = new QPushButton(QStringLiteral("Clear"), content);
  btnAdmins = new QPushButton(QStringLiteral("View Admins"), content);
  btnBans = new QPushButton(QStringLiteral("View Bans"), content);

  lstStatus->setModel(&myStatus);
  lstNetworks->setModel(&myNetworks);
  lstUsers->setModel(&myUsers);

  using A = Anchors;
  content->Add(lstStatus, {20, 261, 493, 252}, A::Left | A::Top | A::Right | A::Bottom);
  content->Add(lstNetworks, {20, 20, 218, 229}, A::Left | A::Top);
  content->Add(lstUsers, {250, 20, 263, 229}, A::Left | A::Top | A::Right);
  lstUsers->setColumnWidth(0, lstUsers->width() / 2);
  PlaceButtons();
  setCentralWidget(content);
}

// A button whose text needs more room than its design width grows away from the window edge.
void wndMain::PlaceButtons() {
  constexpr int kTop = 525;
  constexpr int kGap = 12;
  constexpr int kRight = 513;
  const int height = std::max(20, fontMetrics().height());
  const auto width = [](const QPushButton& button, int design) {
    return std::max(design, WidthOfText(button));
  };
  const int bansWidth = width(*btnBans, 129);
  const int bansLeft = kRight - bansWidth;
  const int adminsWidth = width(*btnAdmins, 129);
  const int adminsLeft = bansLeft - kGap - adminsWidth;

  using A = Anchors;
  myContent->Add(btnClear, {20, kTop, width(*btnClear, 80), height}, A::Left | A::Bottom);
  // Not anchored to the bottom edge: deliberate.
  myContent->Add(btnAdmins, {adminsLeft, kTop, adminsWidth, height}, A::Left | A::Top);
  myContent->Add(btnBans, {bansLeft, kTop, bansWidth, height}, A::Left | A::Top);
}

void wndMain::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::FontChange && myContent != nullptr) PlaceButtons();
}

void wndMain::ConnectEvents() {
  myConnections = {
      sSocket.StatusMessage.Connect(std::bind_front(&wndMain::sSocket_StatusMessage, this)),
      sSocket.UserLoggedIn.Connect(std::bind_front(&wndMain::sSocket_UserLoggedIn, this)),
      sSocket.UserLoggedOut.Connect(std::bind_front(&wndMain::sSocket_UserLoggedOut, this)),
      myOperator.NetworkAdded.Connect(std::bind_front(&NetworksModel::Add, &myNetworks)),
      myOperator.NetworkRemoved.Connect(std::bind_front(&NetworksModel::Remove, &myNetworks)),
      myApp.Updates().UpdateFound.Connect(std::bind_front(&wndMain::ShowUpdate, this)),
  };
  connect(btnClear, &QPushButton::clicked, this, &wndMain::btnClear_Action);
  connect(btnAdmins, &QPushButton::clicked, this, &wndMain::btnAdmins_Action);
  connect(btnBans, &QPushButton::clicked, this, &wndMain::btnBans_Action);
  lstNetworks->ConstructContextualMenu =
      std::bind_front(&wndMain::lstNetworks_ConstructContextualMenu, this);
  lstUsers->ConstructContextualMenu =
      std::bind_front(&wndMain::lstUsers_ConstructContextualMenu, this);
  lstNetworks->RowOpened = [this] { ActOnNetwork(kEditNetwork); };
  lstNetworks->DeleteRequested = [this] { ActOnNetwork(kDeleteNetwork); };
  lstUsers->RowOpened = [this] { ShowConnectionInfo(); };
  connect(&myStatus, &StatusLogModel::rowsInserted, lstStatus, &ListBox::scrollToBottom);
}

void wndMain::FileSettings() {
  (new wndSettings(myOperator, NetworkInterfaces(), *this))->open();
}

void wndMain::FileSendMessage() {
  (new wndMessage(myOperator, *this))->open();
}

void wndMain::FileCheckForUpdates() {
  if (myUpdaterWindow == nullptr) {
    // Shows nothing if there is no update: deliberate.
    myApp.Updates().CheckForNewVersion(true);
  } else {
    myUpdaterWindow->showNormal();
    myUpdaterWindow->raise();
    myUpdaterWindow->activateWindow();
  }
}

void wndMain::ShowUpdate(const Update& update) {
  myUpdaterWindow = new UpdaterWindow(update, myApp.Http(), LaunchInstaller,
                                      [this] { myOperator.QuitFor("updater"); });
  // An open dialog keeps the focus and stays in front.
  QWidget* const dialog = QApplication::activeModalWidget();
  myUpdaterWindow->setAttribute(Qt::WA_ShowWithoutActivating, dialog != nullptr);
  myUpdaterWindow->show();
  if (dialog != nullptr) dialog->raise();
}

void wndMain::btnClear_Action() {
  myStatus.Clear();
}

void wndMain::btnAdmins_Action() {
  (new wndViewAdmins(myOperator, *this))->open();
}

void wndMain::btnBans_Action() {
  (new wndViewBans(myOperator, *this))->open();
}

void wndMain::lstNetworks_ConstructContextualMenu(QMenu& base) {
  const NetworkRef network = myNetworks.NetworkAt(lstNetworks->SelectedRow());
  AddItem(base, kAddNetwork);
  base.addSeparator();
  for (const QLatin1String caption : {kEditNetwork, kDeleteNetwork})
    AddItem(base, caption)->setEnabled(network != nullptr);
  base.addSeparator();
  AddItem(base, kDisconnectAll)->setEnabled(network != nullptr);
  connect(&base, &QMenu::triggered, this, [this, network](const QAction* item) {
    lstNetworks_ContextualMenuAction(item->data().toString(), network);
  });
}

void wndMain::lstNetworks_ContextualMenuAction(const QString& caption, const NetworkRef& network) {
  if (caption == kAddNetwork) {
    (new wndAddNetwork(myOperator, *this))->open();
  } else if (caption == kEditNetwork) {
    (new wndEditNetwork(myOperator, network, *this))->open();
  } else if (caption == kDeleteNetwork) {
    DeleteNetwork(network);
  } else if (caption == kDisconnectAll) {
    myOperator.DisconnectAll(network);
  }
}

void wndMain::ActOnNetwork(QLatin1String caption) {
  const NetworkRef network = myNetworks.NetworkAt(lstNetworks->SelectedRow());
  if (network != nullptr) lstNetworks_ContextualMenuAction(caption, network);
}

void wndMain::ShowConnectionInfo() {
  const auto user = myUsers.ClientAt(lstUsers->SelectedRow());
  if (user != nullptr) lstUsers_ContextualMenuAction(kConnectionInfo, user);
}

void wndMain::DeleteNetwork(const NetworkRef& network) {
  const MessageBox question{MessageBox::Kind::Question, "Delete Network",
                            "Are you sure you wish to delete this network?"};
  if (myApp.ShowMessage(question) != MessageBox::Answer::Yes) return;
  std::ignore = myOperator.DeleteNetwork(network);
}

void wndMain::lstUsers_ConstructContextualMenu(QMenu& base) {
  const auto user = myUsers.ClientAt(lstUsers->SelectedRow());
  if (user == nullptr) return;
  AddItem(base, kConnectionInfo);
  base.addSeparator();
  AddItem(base, kKickUser);
  AddItem(base, kBanUser);
  base.addSeparator();
  AddItem(base, kForceDisconnect);
  base.addSeparator();
  AddItem(base, kMakeAdmin);
  connect(&base, &QMenu::triggered, this, [this, user](const QAction* item) {
    lstUsers_ContextualMenuAction(item->data().toString(), user);
  });
}

void wndMain::lstUsers_ContextualMenuAction(const QString& caption,
                                            const std::shared_ptr<ClientSocket>& user) {
  if (caption == kConnectionInfo) {
    (new wndConnInfo(*user, *this))->open();
  } else if (caption == kKickUser) {
    (new wndKick(myOperator, user, *this))->open();
  } else if (caption == kBanUser) {
    (new wndBan(myOperator, user, *this))->open();
  } else if (caption == kForceDisconnect) {
    myOperator.ForceDisconnect(*user);
  } else if (caption == kMakeAdmin) {
    std::ignore =
        myOperator.MakeAdmin(user->Username(), user->RemoteAddress(), user->NetworkName());
  }
}

void wndMain::sSocket_StatusMessage(MapSocket&, const std::string& text) {
  myStatus.Append(myClock.Prefix(), text);
}

void wndMain::sSocket_UserLoggedIn(MapSocket&, const std::shared_ptr<ClientSocket>& client) {
  myUsers.Add(client->Username(), client->NetworkName(), client);
}

void wndMain::sSocket_UserLoggedOut(MapSocket&, const std::shared_ptr<ClientSocket>& client) {
  myUsers.Remove(client->Username(), client->NetworkName());
}

}  // namespace corvane
