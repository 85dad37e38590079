#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QString>

#include "app/operator.h"
#include "framework/http_client.h"
#include "framework/message_box.h"
#include "framework/network_interfaces.h"
#include "geo/location_lookup.h"
#include "net/poll_loop.h"
#include "server/map_socket.h"
#include "server/rules.h"
#include "storage/app_settings.h"
#include "storage/database_connection.h"
#include "storage/networks_table.h"
#include "updater/version_checker.h"

namespace corvane {

// The application object: owns the pieces of which the process has one, the listener among them,
// and starts and ends it. Made by main, outlives what an operator works with.
class App {
 public:
  // `dataFolder` holds the database and the settings file; none when the system knows no such
  // folder. `showMessage` puts a box before the operator.
  App(std::optional<QString> dataFolder, MessageBoxFunction showMessage);
  ~App();

  // Loads the settings, which say what rules are in force, makes the update checker, opens the
  // database and makes the listener. What goes wrong is shown in a message box; then the result is
  // false and the program has to end. What the database lacks is told as its faults are.
  bool Open();

  // Configures the listener from the settings, starts it and fills its Networks from the database.
  // Ends with the status line "Listening..."; what keeps it from listening is told on standard
  // error.
  void LoadServerSocket();

  // The networks as the database has them, in its order; none when the query fails.
  std::optional<std::vector<NetworkRef>> ReadNetworks();

  // Ends the program with this exit code: nothing can veto it.
  void Quit(int code = 0);
  bool IsQuitting() const { return myIsQuitting; }

  // Where an error ends that nobody caught: sends what was written, closes all connections and the
  // listener, so that nobody waits for the operator, then shows the last-resort message once and
  // quits with code 1. Call it from a catch block.
  void LastResort();

  PollLoop& Loop() { return myLoop; }
  AppSettings& Settings() { return mySettings; }
  DatabaseConnection& serverdb() { return myDatabase; }
  LocationLookup& Locations() { return myLocations; }
  // There once the settings are loaded.
  const Rules& RulesInForce() const { return *myRules; }
  NetworksTable& NetworkRecords() { return *myNetworkRecords; }
  VersionChecker& Updates() { return *myUpdates; }
  HttpClient& Http() { return myHttp; }
  MessageBox::Answer ShowMessage(const MessageBox& box) { return myShowMessage(box); }
  // These are there once it is open.
  MapSocket& Listener() { return *myListener; }
  Operator& Actions() { return *myActions; }

 private:
  bool OpenDatabase();
  void OpenLocations();
  void Tell(const std::string& text);

  std::optional<QString> myDataFolder;
  MessageBoxFunction myShowMessage;
  AppSettings mySettings;
  DatabaseConnection myDatabase;
  std::optional<Rules> myRules;
  std::optional<NetworksTable> myNetworkRecords;
  LocationLookup myLocations;
  HttpClient myHttp;
  std::optional<VersionChecker> myUpdates;
  PollLoop myLoop;  // may hold sockets that borrow the others
  std::shared_ptr<MapSocket> myListener;
  std::optional<Operator> myActions;
  bool myIsQuitting = false;
  bool myLastResortReached = false;
};

// The first interface whose MAC address is the text (letter case ignored); none if none is.
std::optional<NetworkInterface> NICByMac(const std::vector<NetworkInterface>& interfaces,
                                         const std::string& macAddress);

}  // namespace corvane
