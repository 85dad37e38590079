#include "server/app.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include "framework/exceptions.h"
#include "framework/numbers.h"
#include "framework/text.h"
#include "storage/schema_check.h"
#include "updater/version.h"

namespace corvane {
namespace {

constexpr std::int32_t kMaximumConnections = 100'000;
const std::string kAppName = "CorvaneServer";

std::string UserAgent() {
  return kAppName + "/" + RunningVersion().FullVersion();
}

std::int32_t Clamped(std::int64_t number) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

}  // namespace

App::App(std::optional<QString> dataFolder, MessageBoxFunction showMessage)
    : myDataFolder(std::move(dataFolder)),
      myShowMessage(std::move(showMessage)),
      mySettings(myDataFolder),
      myLocations(UserAgent(), QDir::tempPath()),
      myHttp(UserAgent()),
      myLoop([this] { LastResort(); }) {}

App::~App() = default;

bool App::Open() {
  mySettings.Load();
  myRules = Rules::FromSettings(mySettings);
  myNetworkRecords.emplace(myDatabase, myRules->statementValues);
  OpenLocations();
  myUpdates.emplace(mySettings.GetValue("UpdateAddress", ""), kAppName, myHttp, myShowMessage);
  return OpenDatabase();
}

void App::OpenLocations() {
  const std::string locator = mySettings.GetValue("LocatorAddress", "");
  myLocations.SetServices(locator, mySettings.GetValue("FlagAddress", ""));
  const std::string database = mySettings.GetValue("LocationDatabase", "");
  if (database.empty() || !locator.empty() || !myDataFolder) return;
  myLocations.SetDatabase(QDir(*myDataFolder).absoluteFilePath(DisplayText(database)));
}

void App::Tell(const std::string& text) {
  MessageBox box;
  box.text = text;
  myShowMessage(box);
}

bool App::OpenDatabase() {
  if (!myDataFolder) {
    Tell("Unable to locate database.  You may need to uninstall and reinstall.");
    return false;
  }
  const QString file = QFileInfo(*myDataFolder + "/serverdb.rsd").absoluteFilePath();
  if (!QFileInfo::exists(file)) {
    Tell("Unable to locate database at:\n" + QDir::toNativeSeparators(file).toStdString() +
         "\n\nYou may need to uninstall and reinstall.");
    return false;
  }
  if (!myDatabase.Connect(file)) {
    Tell("An error occured while connecting to the database.");
    return false;
  }
  const std::string missing = MissingFromSchema(myDatabase);
  if (!missing.empty()) {
    myDatabase.Tell(QDir::toNativeSeparators(file).toStdString() + " lacks " + missing);
  }
  return true;
}

void App::LoadServerSocket(MapSocket& listener,
                           const std::function<void(const NetworkRef&)>& networkAdded) {
  const std::vector<NetworkInterface> interfaces = NetworkInterfaces();
  const std::string firstMac = interfaces.empty() ? std::string() : interfaces.front().MACAddress;
  const std::string wantedMac = mySettings.GetValue("AttachedNIC", firstMac);
  listener.NetworkInterface = NICByMac(interfaces, wantedMac);
  if (!listener.NetworkInterface && !SameText(wantedMac, "none")) {
    mySettings.Complain("AttachedNIC: no interface has the address \"" + wantedMac +
                        "\"; the server listens on all");
  }
  listener.SetPort(Int32FromText(mySettings.GetValue("AttachedPort", "12000")));
  // Whatever the setting "MaxConns" says: deliberate.
  listener.SetMaximumSocketsConnected(kMaximumConnections);
  listener.Listen();
  if (!myDatabase.IsConnected()) return Quit();
  // Who connects during this loop finds the networks that are in the list so far.
  for (const NetworkRef& network : ReadNetworks().value_or(std::vector<NetworkRef>())) {
    listener.Networks.push_back(network);
    networkAdded(network);
    myLoop.GiveWay();
  }
  listener.CallStatusMessage({"Listening..."});
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

void App::Quit(int code) {
  myIsQuitting = true;
  myLoop.Finish();
  QCoreApplication::exit(code);
}

void App::LastResort() {
  if (std::exchange(myLastResortReached, true)) return;
  myLoop.Finish();
  try {
    Tell("An exception of class " + ClassNameOf(std::current_exception()) +
         " was not handled.  The application must shut down.");
  } catch (const std::bad_alloc&) {
    // Without memory it ends without a word.
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
