#pragma once

#include <memory>
#include <optional>
#include <set>

#include <QCoreApplication>
#include <QMainWindow>

#include "client/connection.h"
#include "framework/signal.h"
#include "map/administration.h"
#include "map/alarm_bell.h"
#include "map/banner.h"
#include "map/connector.h"
#include "map/facet_box.h"
#include "map/facet_pictures.h"
#include "map/landmarks.h"
#include "map/map_actions.h"
#include "map/map_view.h"
#include "map/member_news.h"
#include "map/members_panel.h"
#include "map/messages_pane.h"
#include "map/own_bar.h"
#include "map/own_position.h"
#include "map/pings.h"
#include "map/place_commands.h"
#include "map/place_picker.h"
#include "map/recording_control.h"
#include "map/settings.h"
#include "map/sharing.h"
#include "map/status_line.h"
#include "map/window_layout.h"

namespace corvane::map {

// The main window: the map, the list of members beside it, the messages below. Owns the connection,
// the settings and the objects that work with them, and connects the events of its parts. The
// selected member is kept by name: its marker has the selection again when it returns.
class MapWindow : public QMainWindow {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MapWindow)

 public:
  // Creates the settings file if there is none. Tiles of pictures go below `cacheFolder`.
  MapWindow(const QString& settingsFile, const QString& cacheFolder,
            client::Connection::Timing timing = {});

  // Shows the place and logs in with the given values. The dialog stays open if that fails.
  void LoginTo(const RecentServer& server) {
    mySettings.SetCurrentPlace(server.Key());
    myConnector.TryGiven(server);
  }
  void AskWhere() { myConnector.Ask(); }
  void OpenPlace(const QString& fileOrLink) { mySharing->Open(fileOrLink); }
  void ShowFacet(int facet);
  int Facet() const { return myScene->Facet(); }
  // Stores the picture of a facet once it has been cut, and shows it if the facet is shown.
  void SetPicture(int facet, const MapPicture& picture) { myPictures->Set(facet, picture); }

  client::Connection& Wire() { return myConnection; }
  Landmarks& Marks() { return *myLandmarks; }
  AlarmBell& Alarms() { return *myAlarms; }
  Pings& ShownPings() { return myPings; }
  MarkerBoard& Board() { return myBoard; }
  const Highlights& Shown() const { return myHighlights; }

  // The controls, in tab order. The window owns them.
  MapView* map;
  Banner* barState;
  MembersPanel* pnlMembers;
  MessagesPane* txtMessages;
  StatusLine* stsLine;
  OwnBar* barOwn;
  FacetBox* cmbFacet;
  std::unique_ptr<MapActions> actions;
  std::unique_ptr<PlaceCommands> places;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void LayOut();
  void WireConnection();
  void WireMap();
  void WirePanels();
  void WireActions();
  void WireMemberActions();
  void WireFeatureActions();
  template <typename Act>
  void On(QAction* action, Act act) {
    connect(action, &QAction::triggered, this, act);
  }

  void EndTasks();
  void ShowState();
  void ShowOwn();
  void Select(const client::Member* member);
  void Forget(const client::Member& member);
  void SelectAgain();
  void EnableActions();
  void ListFacets();
  void ChooseFacet(int facet);
  void OpenMemberMenu(QPoint at);
  void ToggleFollow();

  Settings mySettings;
  client::Connection myConnection;
  MarkerBoard myBoard;
  MemberNews myNews;
  Highlights myHighlights;
  OwnPosition myOwnPosition;
  Connector myConnector;
  Administration myAdministration;
  Pings myPings;
  RecordingControl myRecording;
  std::unique_ptr<FacetPictures> myPictures;
  std::unique_ptr<PlacePicker> myPicker;
  std::unique_ptr<Landmarks> myLandmarks;
  std::unique_ptr<Sharing> mySharing;
  std::unique_ptr<AlarmBell> myAlarms;
  std::unique_ptr<MapScene> myScene;
  QTimer myTimer;
  SignalConnection myStateChanged;
  SignalConnection myPlaceChanged;
  std::string mySelected;        // name; empty: nobody
  std::set<int> myFittedFacets;  // shown as a whole since the login
  bool myShowsAllNext = true;    // as soon as the facet has a marker
  bool myIsOnline = false;
  bool myReportedIncomplete = false;
  // Holds the views, which use the members above: it is last, to be destroyed first.
  std::unique_ptr<WindowLayout> myLayout;
};

}  // namespace corvane::map
