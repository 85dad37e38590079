#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QString>

#include "app/line_writer.h"
#include "app/operator.h"
#include "app/server_log.h"
#include "app/status_clock.h"
#include "framework/http_client.h"
#include "framework/message_box.h"
#include "framework/signal.h"
#include "geo/location_lookup.h"
#include "net/poll_loop.h"
#include "platform/network_interfaces.h"
#include "server/map_socket.h"
#include "server/rules.h"
#include "storage/app_settings.h"
#include "storage/database_connection.h"
#include "storage/networks_table.h"
#include "updater/version_checker.h"

namespace corvane {

// The application object: owns the pieces of which the process has one, the listener and the log
// among them, and starts and ends it. Has status lines written to standard output, and all that the
// operator is told to the log. Made by main, outlives what an operator works with.
class App {
 public:
  // `dataFolder` holds the database and the settings file; none when the system knows no such
  // folder. `showMessage` puts a box before the operator.
  App(std::optional<QString> dataFolder, MessageBoxFunction showMessage);
  ~App();

  // Loads the settings, which say what rules are in force, makes the update checker, opens the
  // database and makes the listener. What goes wrong is shown in a message box; then the result is
  // false and the program has to end. What cannot be written, what the database lacks and what is
  // not understood of the settings is told on standard error and in the log.
  bool Open();

  // Runs Qt's loop by `exec`, and `open` first in it, where quitting and errors are provided for.
  // The service manager is told when the server listens and when it ends. Returns the exit code.
  int Run(int (*exec)(), std::function<void()> open);

  // Configures the listener from the settings, starts it and fills its Networks from the database.
  // Ends with the status line "Listening..."; what keeps it from listening is told on standard
  // error, and an interface that is not there as faults of the settings are.
  void LoadServerSocket();

  // The networks as the database has them, in its order; none when the query fails.
  std::optional<std::vector<NetworkRef>> ReadNetworks();

  // Ends the program with this exit code: nothing can veto it.
  void Quit(int code = 0);
  // The same on behalf of somebody, who is noted.
  void QuitFor(const std::string& actor);
  bool IsQuitting() const { return myIsQuitting; }

  // Where an error ends that nobody caught: sends what was written, closes all connections and the
  // listener, so that nobody waits for the operator, then shows the last-resort message once and
  // quits with code 1. Call it from a catch block.
  void LastResort();

  PollLoop& Loop() { return myLoop; }
  ServerLog& Log() { return myLog; }
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
  Operator& Actions() { return *myOperator; }

 private:
  bool OpenDatabase();
  void OpenLocations();
  void OpenListener();
  void Show(const std::string& text);
  void ReportFaults(const std::vector<std::string>& faults);

  std::optional<QString> myDataFolder;
  ServerLog myLog;  // outlives all that writes into it
  StatusClock myClock;
  StandardOutput myOutput;
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
  std::optional<Operator> myOperator;
  SignalConnection myStatusLines;
  bool myIsQuitting = false;
  bool myLastResortReached = false;
};

// The first interface whose MAC address is the text (letter case ignored); none if none is.
std::optional<NetworkInterface> NICByMac(const std::vector<NetworkInterface>& interfaces,
                                         const std::string& macAddress);

}  // namespace corvane
