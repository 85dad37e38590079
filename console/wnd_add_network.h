#pragma once

#include "console/network_dialog.h"

namespace corvane {

class DatabaseConnection;
class MapSocket;
class NetworksModel;

// The dialog that adds a network: to the listener, to the main window's list and to the database.
// A name may be empty or in use already.
class wndAddNetwork : public NetworkDialog {
 public:
  wndAddNetwork(MapSocket& listener, NetworksModel& list, DatabaseConnection& serverdb,
                QWidget& owner);

 private:
  void btnOK_Action();

  MapSocket& myListener;
  NetworksModel& myList;
  DatabaseConnection& myDatabase;
};

}  // namespace corvane
