#pragma once

#include <memory>
#include <optional>
#include <set>

#include <QComboBox>
#include <QCoreApplication>
#include <QMainWindow>
#include <QSplitter>

#include "client/connection.h"
#include "framework/signal.h"
#include "map/administration.h"
#include "map/connector.h"
#include "map/map_actions.h"
#include "map/map_view.h"
#include "map/members_panel.h"
#include "map/messages_pane.h"
#include "map/own_bar.h"
#include "map/own_position.h"
#include "map/pictures/map_pictures.h"
#include "map/settings.h"
#include "map/status_line.h"

namespace corvane::map {

// The main window: the map, the list of members beside it, the messages below. Owns the connection,
// the settings and the objects that work with them, and connects the events of its parts.
class MapWindow : public QMainWindow {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MapWindow)

 public:
  // Creates the settings file if there is none. Tiles of pictures go below `cacheFolder`.
  MapWindow(const QString& settingsFile, const QString& cacheFolder,
            client::Connection::Timing timing = {});

  // Logs in with the given values. The dialog stays open if that fails.
  void LoginTo(const RecentServer& server) { myConnector.TryGiven(server); }
  void AskWhere() { myConnector.Ask(); }
  void ShowFacet(int facet);
  int Facet() const { return myScene->Facet(); }
  // Stores the picture of a facet, and shows it if the facet is shown.
  void SetPicture(int facet, const MapPicture& picture);

  client::Connection& Wire() { return myConnection; }
  MarkerBoard& Board() { return myBoard; }
  const Highlights& Shown() const { return myHighlights; }

  // The controls, in tab order. The window owns them.
  MapView* map;
  QComboBox* cmbFacet;
  OwnBar* barOwn;
  MembersPanel* pnlMembers;
  MessagesPane* txtMessages;
  StatusLine* stsLine;
  std::unique_ptr<MapActions> actions;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void LayOut();
  void WireConnection();
  void WireMap();
  void WireActions();
  void RestoreLayout();
  void SaveLayout();

  void ShowState();
  void Select(const client::Member* member);
  void Forget(const client::Member& member);
  void EnableActions();
  void ListFacets();
  void ShowPicture();
  void AskForPicture();
  void OpenMemberMenu(QPoint at);
  void ToggleFollow() const;

  Settings mySettings;
  client::Connection myConnection;
  MarkerBoard myBoard;
  Highlights myHighlights;
  OwnPosition myOwnPosition;
  Connector myConnector;
  Administration myAdministration;
  MapPictures myPictures;
  std::unique_ptr<MapScene> myScene;
  QSplitter* myColumns;
  QTimer myFacetTimer;
  SignalConnection myStateChanged;
  std::set<int> myFacets;      // in cmbFacet
  bool myShowsAllNext = true;  // as soon as the facet has a marker
  bool myIsOnline = false;
  bool myReportedIncomplete = false;
  // Holds the views, which use the members above: it is last, to be destroyed first.
  std::unique_ptr<QSplitter> myRows;
};

}  // namespace corvane::map
