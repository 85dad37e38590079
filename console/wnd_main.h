#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QMainWindow>
#include <QMenu>
#include <QPointer>
#include <QPushButton>

#include "app/operator.h"
#include "app/status_clock.h"
#include "console/list_box.h"
#include "console/networks_model.h"
#include "console/status_log_model.h"
#include "console/users_model.h"
#include "console/window_group.h"
#include "framework/signal.h"
#include "server/map_socket.h"

namespace corvane {

class Anchors;
class App;
class UpdaterWindow;
struct Update;

// The operator's window: the status log, the networks, the logged-in users. Receives the listener's
// events; borrows the application object, which outlives it. Closing it does not stop the server.
class wndMain : public QMainWindow {
 public:
  // `hasTray` says whether the desktop has a notification area to bring a hidden window back from.
  wndMain(App& app, std::function<bool()> hasTray);
  ~wndMain() override;

  // The open handler: shows the window, or with the setting "StartHidden" leaves it to the tray,
  // where there is none minimised; empties its lists and starts the listener, which fills the list
  // of networks.
  void Open();

  // Both with the dialogs that are open.
  void HideWindow() { myGroup.Hide(); }
  void ShowWindow() { myGroup.Show(); }

  // The listener.
  MapSocket& sSocket;

  // The controls, in tab order. The window owns them.
  ListBox* lstStatus;
  ListBox* lstNetworks;
  ListBox* lstUsers;
  QPushButton* btnClear;
  QPushButton* btnAdmins;
  QPushButton* btnBans;

  StatusLogModel& Status() { return myStatus; }
  NetworksModel& Networks() { return myNetworks; }
  UsersModel& Users() { return myUsers; }

 protected:
  // Hides the window and refuses, or, on a desktop that could not bring it back, minimises it;
  // accepts when the program or the desktop session ends.
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void BuildMenus();
  void PlaceControls();
  void PlaceButtons();
  void ConnectEvents();

  void FileSettings();
  void FileSendMessage();
  void FileCheckForUpdates();
  void ShowUpdate(const Update& update);
  void btnClear_Action();
  void btnAdmins_Action();
  void btnBans_Action();

  // Each context menu holds the network or user that was selected when it opened: what happens to
  // the rows while it is open changes nothing for it.
  void lstNetworks_ConstructContextualMenu(QMenu& base);
  void lstNetworks_ContextualMenuAction(const QString& caption, const NetworkRef& network);
  void lstUsers_ConstructContextualMenu(QMenu& base);
  void lstUsers_ContextualMenuAction(const QString& caption,
                                     const std::shared_ptr<ClientSocket>& user);
  // What the menus have for the selected row, by the keys and clicks that stand for it.
  void ActOnNetwork(QLatin1String caption);
  void ShowConnectionInfo();
  void DeleteNetwork(const NetworkRef& network);

  void sSocket_StatusMessage(MapSocket& sender, const std::string& text);
  void sSocket_UserLoggedIn(MapSocket& sender, const std::shared_ptr<ClientSocket>& client);
  void sSocket_UserLoggedOut(MapSocket& sender, const std::shared_ptr<ClientSocket>& client);

  App& myApp;
  Operator& myOperator;
  std::function<bool()> myHasTray;
  StatusClock myClock;
  StatusLogModel myStatus;
  NetworksModel myNetworks;
  UsersModel myUsers;
  WindowGroup myGroup{*this};
  Anchors* myContent = nullptr;
  // A window of its own, so that neither it nor a dialog keeps the other from being used.
  QPointer<UpdaterWindow> myUpdaterWindow;
  std::vector<SignalConnection> myConnections;
};

}  // namespace corvane
