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

// The application object: owns what the process has only one of (settings, database, event loop,
// listener, log), opens these in order, and ends the program. Writes status lines to standard
// output, and logs the messages to the operator. RunServer makes it; the front ends borrow it.
class App {
 public:
  // `dataFolder` holds the database and the settings file; none if the system has no such folder.
  // `showMessage` shows the operator a message box.
  App(std::optional<QString> dataFolder, MessageBoxFunction showMessage);
  ~App();

  // Loads the settings, which choose the rules, makes the update checker, opens the database and
  // makes the listener. Returns false if the program cannot start, after a message box with the
  // reason. Standard error and the log list the faults with which the server works: files that it
  // cannot write, missing tables and columns, invalid values of settings.
  bool Open();

  // Runs Qt's loop by calling `exec`. Calls `open` first inside that loop, where quitting and the
  // last resort work. Notifies the service manager when the server listens and when it ends.
  // Returns the exit code.
  int Run(int (*exec)(), std::function<void()> open);

  // Configures the listener from the settings, starts it and fills its Networks from the database.
  // Ends with the status line "Listening...", even if the server cannot listen; standard error then
  // has the reason. Reports an unknown interface like any other fault in the settings.
  void LoadServerSocket();

  // The networks in the database, in its order; none if the query fails.
  std::optional<std::vector<NetworkRef>> ReadNetworks();

  // Ends the program with this exit code. No window can veto it.
  void Quit(int code = 0);
  // The same, with the actor in the audit log.
  void QuitFor(const std::string& actor);
  bool IsQuitting() const { return myIsQuitting; }

  // Ends the program after an uncaught error: flushes and closes all connections and the listener,
  // shows the last-resort message once and quits with code 1. The message comes last, because the
  // operator may take long to answer. Call it from a catch block.
  void LastResort();

  PollLoop& Loop() { return myLoop; }
  ServerLog& Log() { return myLog; }
  AppSettings& Settings() { return mySettings; }
  DatabaseConnection& serverdb() { return myDatabase; }
  LocationLookup& Locations() { return myLocations; }
  // Valid once the settings are loaded.
  NetworksTable& NetworkRecords() { return *myNetworkRecords; }
  VersionChecker& Updates() { return *myUpdates; }
  HttpClient& Http() { return myHttp; }
  MessageBox::Answer ShowMessage(const MessageBox& box) { return myShowMessage(box); }
  // Valid after Open().
  MapSocket& Listener() { return *myListener; }
  Operator& Op() { return *myOperator; }

 private:
  bool OpenDatabase();
  void OpenLocations();
  void OpenListener();
  void Show(const std::string& text);
  void ReportRule(const std::string& line);
  void ReportFaults(const std::vector<std::string>& faults);

  std::optional<QString> myDataFolder;
  ServerLog myLog;  // outlives everything that writes to it
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
  PollLoop myLoop;  // its sockets may borrow the members above
  std::shared_ptr<MapSocket> myListener;
  std::optional<Operator> myOperator;
  SignalConnection myStatusLines;
  bool myIsQuitting = false;
  bool myLastResortReached = false;
};

// The first interface with this MAC address, letter case ignored.
std::optional<NetworkInterface> NICByMac(const std::vector<NetworkInterface>& interfaces,
                                         const std::string& macAddress);

}  // namespace corvane
