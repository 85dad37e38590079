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

// The operator's window: the status log, the networks and the logged-in users. Shows the listener's
// events, and acts through the Operator. Borrows the application object. Closing the window does
// not stop the server.
class wndMain : public QMainWindow {
 public:
  // `hasTray` returns whether the desktop has a notification area, from which a hidden window can
  // be shown again.
  wndMain(App& app, std::function<bool()> hasTray);
  ~wndMain() override;

  // The open handler: shows the window, empties its lists and starts the listener, which fills the
  // list of networks. With the setting "StartHidden" the window starts hidden, or minimised if
  // there is no tray.
  void Open();

  // Both include the open dialogs.
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
  // Refuses, and hides the window, or minimises it if there is no tray. Accepts if the program or
  // the desktop session ends.
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

  // A context menu acts on the network or user that was selected when it opened, even if the rows
  // change meanwhile.
  void lstNetworks_ConstructContextualMenu(QMenu& base);
  void lstNetworks_ContextualMenuAction(const QString& caption, const NetworkRef& network);
  void lstUsers_ConstructContextualMenu(QMenu& base);
  void lstUsers_ContextualMenuAction(const QString& caption,
                                     const std::shared_ptr<ClientSocket>& user);
  // The keyboard and double-click equivalents of the menus, for the selected row.
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
  // A top-level window, so that neither it nor a dialog blocks the other.
  QPointer<UpdaterWindow> myUpdaterWindow;
  std::vector<SignalConnection> myConnections;
};

}  // namespace corvane
