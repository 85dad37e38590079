#include "app/app.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <utility>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include "app/write_faults.h"
#include "framework/exceptions.h"
#include "framework/numbers.h"
#include "framework/status_line.h"
#include "framework/text.h"
#include "platform/service_manager.h"
#include "platform/standard_error.h"
#include "server/setting.h"
#include "storage/schema_check.h"
#include "updater/version.h"

namespace corvane {
namespace {

constexpr std::int32_t kMaxConnections = 100'000;
const std::string kAppName = "CorvaneServer";

std::string UserAgent() {
  return kAppName + "/" + RunningVersion().FullVersion();
}

std::int32_t Clamped(std::int64_t number) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

std::string WhyNotListening(const MapSocket& listener) {
  constexpr int kMaxPort = 65535;
  const int port = listener.Port();
  const std::string reason =
      port < 0 || port > kMaxPort
          ? "there is no such port; ports go from 0 to " + std::to_string(kMaxPort)
          : std::system_category().message(listener.LastErrorCode());
  return "Cannot listen on port " + std::to_string(port) + ": " + reason;
}

}  // namespace

App::App(std::optional<QString> dataFolder, MessageBoxFunction showMessage)
    : myDataFolder(std::move(dataFolder)),
      myLog(myDataFolder),
      myShowMessage([this, show = std::move(showMessage)](const MessageBox& box) {
        if (box.kind == MessageBox::Kind::Message) myLog.Write(StatusLine({box.text}));
        return show(box);
      }),
      mySettings(myDataFolder),
      myLocations(UserAgent(), QDir::tempPath()),
      myHttp(UserAgent()),
      myLoop([this] { LastResort(); }) {
  const auto writeLine = [this](const std::string& text) { myLog.Write(StatusLine({text})); };
  mySettings.FaultReported = writeLine;
  myDatabase.FaultReported = writeLine;
  myLocations.Logged = writeLine;
}

App::~App() = default;

bool App::Open() {
  if (myDataFolder) ReportFaults(WriteFaults(*myDataFolder));
  mySettings.Load();
  myRules = Rules::FromSettings(mySettings);
  myNetworkRecords.emplace(myDatabase, myRules->statementValues);
  OpenLocations();
  myUpdates.emplace(mySettings.GetValue("UpdateAddress", ""), kAppName, myHttp, myShowMessage);
  if (!OpenDatabase()) return false;
  OpenListener();
  ReportFaults(FaultsOf(mySettings));
  myLog.WriteAudit("Started, version " + RunningVersion().FullVersion());
  ReportRule("Rules in force: " + std::string(myRules->name));
  const std::string& proxies = myRules->proxyAddresses.Text();
  if (!proxies.empty()) ReportRule("PROXY headers expected from: " + proxies);
  return true;
}

void App::ReportRule(const std::string& line) {
  WriteErrorLine(line);
  myLog.WriteAudit(line);
}

void App::OpenListener() {
  myListener = std::make_shared<MapSocket>(myLoop, myDatabase, myLocations, *myRules);
  myOperator.emplace(*this, *myListener);
  myListener->Logged = [this](const std::string& line) { myLog.Write(line); };
  myListener->Audited = [this](const std::string& line) { myLog.WriteAudit(line); };
  myStatusLines = myListener->StatusMessage.Connect(
      [this](MapSocket&, const std::string& text) { myOutput.WriteLine(myClock.Prefix() + text); });
}

void App::OpenLocations() {
  const std::string locator = mySettings.GetValue("LocatorAddress", "");
  myLocations.SetServices(locator, mySettings.GetValue("FlagAddress", ""));
  const std::string database = mySettings.GetValue("LocationDatabase", "");
  if (database.empty() || !locator.empty() || !myDataFolder) return;
  myLocations.SetDatabase(QDir(*myDataFolder).absoluteFilePath(DisplayText(database)));
}

void App::Show(const std::string& text) {
  myShowMessage({MessageBox::Kind::Message, {}, text});
}

void App::ReportFaults(const std::vector<std::string>& faults) {
  for (const std::string& fault : faults) {
    WriteErrorLine(fault);
    myLog.Write(StatusLine({fault}));
  }
}

bool App::OpenDatabase() {
  if (!myDataFolder) {
    Show("Unable to locate database.  You may need to uninstall and reinstall.");
    return false;
  }
  const QString file = QFileInfo(*myDataFolder + "/serverdb.rsd").absoluteFilePath();
  if (!QFileInfo::exists(file)) {
    Show("Unable to locate database at:\n" + QDir::toNativeSeparators(file).toStdString() +
         "\n\nYou may need to uninstall and reinstall.");
    return false;
  }
  if (!myDatabase.Connect(file)) {
    Show("An error occured while connecting to the database.");
    return false;
  }
  const std::string missing = MissingFromSchema(myDatabase);
  if (!missing.empty()) {
    myDatabase.Report(QDir::toNativeSeparators(file).toStdString() + " lacks " + missing);
  }
  return true;
}

void App::LoadServerSocket() {
  MapSocket& listener = *myListener;
  const std::vector<NetworkInterface> interfaces = NetworkInterfaces();
  const std::string firstMac = interfaces.empty() ? std::string() : interfaces.front().MACAddress;
  const std::string wantedMac = mySettings.GetValue("AttachedNIC", firstMac);
  listener.NetworkInterface = NICByMac(interfaces, wantedMac);
  if (!listener.NetworkInterface && !SameText(wantedMac, "none")) {
    mySettings.ReportFault("AttachedNIC: no interface has the address \"" + wantedMac +
                           "\"; the server listens on all");
  }
  listener.SetPort(Int32FromText(mySettings.GetValue("AttachedPort", "12000")));
  // The setting "MaxConns" is ignored: deliberate.
  listener.SetMaximumSocketsConnected(kMaxConnections);
  listener.Listen();
  if (!myDatabase.IsConnected()) return Quit();
  // A client that connects during this loop finds only the networks listed so far.
  for (const NetworkRef& network : ReadNetworks().value_or(std::vector<NetworkRef>())) {
    listener.Networks.push_back(network);
    myOperator->NetworkAdded(network);
    myLoop.GiveWay();
  }
  listener.CallStatusMessage({"Listening..."});
  listener.Context.events.Raise({.kind = ServerEvent::Kind::Started});
  if (!listener.IsListening()) WriteErrorLine(WhyNotListening(listener));
}

std::optional<std::vector<NetworkRef>> App::ReadNetworks() {
  std::optional<DatabaseCursor> row = myNetworkRecords->All();
  if (!row) return std::nullopt;
  std::vector<NetworkRef> networks;
  for (; !row->EndOfRows(); row->MoveNext()) {
    networks.push_back(std::make_shared<ServerNetworks>(row->Text("name"), row->Text("pass"),
                                                        Clamped(row->Integer("users")),
                                                        row->Boolean("enabled")));
  }
  return networks;
}

int App::Run(int (*exec)(), std::function<void()> open) {
  QMetaObject::invokeMethod(
      qApp,
      [this, open = std::move(open)] {
        open();
        if (myListener->IsListening()) NotifyServiceManager(ServiceState::Ready);
      },
      Qt::QueuedConnection);
  QObject::connect(qApp, &QCoreApplication::aboutToQuit,
                   [] { NotifyServiceManager(ServiceState::Stopping); });
  // Qt's loop runs the sockets, too: while the timer fires, they are served.
  QTimer watchdog;
  QObject::connect(&watchdog, &QTimer::timeout, [] { NotifyServiceManager(ServiceState::Alive); });
  if (const auto interval = WatchdogInterval()) {
    watchdog.start(std::chrono::duration_cast<std::chrono::milliseconds>(*interval / 3));
  }
  const int code = exec();
  myLog.WriteAudit("Ended with code " + std::to_string(code));
  return code;
}

void App::QuitFor(const std::string& actor) {
  myOperator ? myOperator->QuitFor(actor) : Quit();
}

void App::Quit(int code) {
  const bool isFirst = !std::exchange(myIsQuitting, true);
  if (isFirst && myListener) {
    myListener->Context.events.Raise({.kind = ServerEvent::Kind::Stopping});
  }
  myLoop.Finish();
  QCoreApplication::exit(code);
}

void App::LastResort() {
  if (std::exchange(myLastResortReached, true)) return;
  myLoop.Finish();
  try {
    Show("An exception of class " + ClassNameOf(std::current_exception()) +
         " was not handled.  The application must shut down.");
  } catch (const std::bad_alloc&) {
    // No memory for the message: end without it.
  }
  Quit(1);
}

std::optional<NetworkInterface> NICByMac(const std::vector<NetworkInterface>& interfaces,
                                         const std::string& macAddress) {
  for (const NetworkInterface& candidate : interfaces) {
    if (SameText(candidate.MACAddress, macAddress)) return candidate;
  }
  return std::nullopt;
}

}  // namespace corvane
