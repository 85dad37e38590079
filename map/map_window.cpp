#include "map/map_window.h"

#include <chrono>
#include <utility>

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/accessible_map.h"
#include "map/help.h"
#include "map/map_buttons.h"

namespace corvane::map {
namespace {

using client::Member;
using State = client::Connection::State;

constexpr std::chrono::milliseconds kWindowInterval{500};

}  // namespace

MapWindow::MapWindow(const QString& settingsFile, const QString& cacheFolder,
                     client::Connection::Timing timing)
    : txtMessages(new MessagesPane(this)),
      mySettings(settingsFile),
      myConnection(timing),
      myBoard(myConnection.Others()),
      myNews(myConnection.Others(), *txtMessages),
      myOwnPosition(myConnection),
      myConnector(myConnection, mySettings, *txtMessages, *this),
      myAdministration(myConnection, *txtMessages, *this),
      myPings(myConnection, mySettings, *this),
      myRecording(myConnection, mySettings, *txtMessages, *this, settingsFile, cacheFolder) {
  setWindowTitle(tr("Corvane Map"));
  setObjectName(QStringLiteral("MapWindow"));
  InstallAccessibleMap();
  map = new MapView(myBoard, myHighlights, this);
  map->setObjectName(QStringLiteral("map"));
  map->setAccessibleName(tr("Map"));
  map->setAccessibleDescription(tr("The list of members shows the same as text"));
  barState = new Banner(myConnection, *map);
  pnlMembers = new MembersPanel(myConnection.Others(), this);
  stsLine = new StatusLine(myConnection, this);
  barOwn = new OwnBar(myOwnPosition, this);
  cmbFacet = new FacetBox(this);
  actions = std::make_unique<MapActions>(*menuBar(), *map);
  myPictures =
      std::make_unique<FacetPictures>(cacheFolder, mySettings, *map, *stsLine, *txtMessages, *this);
  myPicker = std::make_unique<PlacePicker>(*map, *barState);
  myLandmarks = std::make_unique<Landmarks>(mySettings, *map, *myPicker, *txtMessages, *this);
  mySharing = std::make_unique<Sharing>(
      myConnection, mySettings, myConnector, *myPictures, myLandmarks->Board(), *txtMessages, *this,
      QFileInfo(settingsFile).absolutePath() + QStringLiteral("/Corvane Map Pictures"));
  places = std::make_unique<PlaceCommands>(myBoard, *map, *actions, *this);
  // Home is a key of the list, too.
  for (QAction* action : map->actions()) {
    if (action != actions->actShowAll) pnlMembers->lstMembers->addAction(action);
  }
  myAlarms =
      std::make_unique<AlarmBell>(myConnection, mySettings, *map, *myPicker, *txtMessages, *this);
  myHighlights.alarms = &myAlarms->Watch();
  pnlMembers->ShowAlarms(myAlarms->Watch());
  LayOut();
  map->PlaceButtons(*new MapButtons(*actions->actZoomIn, *actions->actZoomOut, *actions->actShowAll,
                                    *actions->actShowMe, map->viewport()));
  WireConnection();
  WireMap();
  WirePanels();
  WireActions();
  WireMemberActions();
  WireFeatureActions();
  myLayout->Restore();
  ShowFacet(0);
  ShowState();
  map->setFocus();
}

void MapWindow::LayOut() {
  auto* label = new QLabel(tr("Fa&cet:"), this);
  label->setBuddy(cmbFacet);
  cmbFacet->setAccessibleName(tr("Facet"));
  cmbFacet->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  for (QWidget* control : std::initializer_list<QWidget*>{barOwn, label, cmbFacet})
    stsLine->AddControl(control);
  setStatusBar(stsLine);
  myLayout =
      std::make_unique<WindowLayout>(*this, *map, *pnlMembers, *txtMessages, *actions, mySettings);
  QWidget* before = map;
  for (QWidget* next : std::initializer_list<QWidget*>{
           barState->btnAct, pnlMembers->fldFilter, pnlMembers->lstMembers, txtMessages,
           barOwn->chkSend, barOwn->spnHp, barOwn->chkBattle, barOwn->chkDead, cmbFacet}) {
    setTabOrder(before, next);
    before = next;
  }
}

void MapWindow::WireConnection() {
  myStateChanged = myConnection.StateChanged.Connect([this] { ShowState(); });
  myConnection.MessageReceived = [this](std::string_view text) {
    txtMessages->Add(tr("Message: %1").arg(DisplayText(text)));
    myPings.Receive(DisplayText(text));
  };
  myPlaceChanged = mySettings.PlaceChanged.Connect([this] {
    EndTasks();
    myPings.Clear();
    myPictures->Show();
    ListFacets();
  });
  myPictures->Shown = [this] {
    if (myBoard.Extent(Facet()).isNull()) map->ShowAll();
  };
}

void MapWindow::WireMap() {
  myBoard.MemberRemoved = [this](const Member& member) { Forget(member); };
  map->MemberClicked = [this](const Member& member) {
    pnlMembers->Select(&member);
    Select(&member);
  };
  map->PlaceClicked = [this](QPointF place) {
    if (myOwnPosition.IsOn()) {
      myOwnPosition.GoTo(place, Facet());
    } else {
      pnlMembers->Select(nullptr);
      Select(nullptr);
    }
  };
  map->MemberMenuRequested = [this](const Member& member, QPoint at) {
    map->MemberClicked(member);
    OpenMemberMenu(at);
  };
  map->PointerMoved = [this](std::optional<QPointF> place) { stsLine->ShowPlace(place); };
  myLandmarks->PlaceRequested = [this](QPointF place, int facet) {
    map->StopFollowing();
    map->CentreOn(place, facet);
  };
  map->FacetRequested = [this](int facet) { ShowFacet(facet); };
  map->FollowChanged = [this] {
    if (map->IsFollowing()) myShowsAllNext = false;
    EnableActions();
  };
  map->ArrowPressed = [this](int columns, int rows) {
    if (myOwnPosition.IsOn()) myOwnPosition.Step(columns, rows, Facet());
    return myOwnPosition.IsOn();
  };
}

void MapWindow::WirePanels() {
  myOwnPosition.Changed = [this] {
    myAlarms->Watch().TakeOwn(myOwnPosition.Shown());
    ShowOwn();
    EnableActions();
  };
  barState->ConnectRequested = [this] { AskWhere(); };
  pnlMembers->Selected = [this](const Member* member) {
    Select(member);
    if (member == nullptr) return;
    myShowsAllNext = false;
    map->StopFollowing();
    map->CentreOn(*member);
  };
  pnlMembers->OwnSelected = [this] { map->ShowMe(); };
  pnlMembers->Activated = [this](const Member& member) {
    Select(&member);
    map->Follow(member);
  };
  pnlMembers->MenuRequested = [this](const Member&, QPoint at) { OpenMemberMenu(at); };
  connect(cmbFacet, &QComboBox::activated, this,
          [this] { ChooseFacet(cmbFacet->currentData().toInt()); });
  connect(&myTimer, &QTimer::timeout, this, [this] {
    ListFacets();
    SelectAgain();
  });
  myTimer.start(kWindowInterval);
}

void MapWindow::WireActions() {
  On(actions->actConnect, [this] { AskWhere(); });
  On(actions->actDisconnect, [this] { myConnection.Close(); });
  On(actions->actOpenPlace, [this] { mySharing->AskForFile(); });
  On(actions->actShare, [this] { mySharing->Share(); });
  On(actions->actRecordings, [this] { myRecording.ShowRecordings(); });
  On(actions->actQuit, [this] { close(); });
  On(actions->actZoomIn, [this] { map->ZoomIn(); });
  On(actions->actZoomOut, [this] { map->ZoomOut(); });
  On(actions->actShowAll, [this] { map->ShowAll(); });
  On(actions->actShowMe, [this] { map->ShowMe(); });
  On(actions->actStop,
     [this] { myLayout->IsCompact() ? myLayout->EndCompact() : map->StopFollowing(); });
  connect(actions->actCompact, &QAction::toggled, this, [this] { EnableActions(); });
  On(actions->actFind, [this] { myLayout->Find(); });
  On(actions->actKeys, [this] { ShowKeys(*this, *menuBar()); });
  On(actions->actAbout, [this] { ShowAbout(*this); });
  On(actions->actPicture, [this] { myPictures->Ask(); });
  connect(actions->actSend, &QAction::toggled, barOwn->chkSend, &QCheckBox::setChecked);
  connect(barOwn->chkSend, &QCheckBox::toggled, actions->actSend, &QAction::setChecked);
}

void MapWindow::WireMemberActions() {
  // For actions on the selected member.
  const auto onMember = [this](QAction* action, auto act) {
    On(action, [this, act] {
      if (myHighlights.selected != nullptr) act(*myHighlights.selected);
    });
  };
  On(actions->actFollow, [this] { ToggleFollow(); });
  onMember(actions->actTrail, [this](const Member& member) {
    myBoard.SetTrail(member, actions->actTrail->isChecked());
    EnableActions();
  });
  onMember(actions->actCopy, [](const Member& member) {
    PlaceCommands::Copy({member.report.x, member.report.y}, member.report.facet);
  });
  onMember(actions->actKick, [this](const Member& member) { myAdministration.Kick(member.name); });
  onMember(actions->actBan, [this](const Member& member) { myAdministration.Ban(member.name); });
  On(actions->actMessage, [this] { myAdministration.SendMessage(); });
  On(actions->actBans, [this] { myAdministration.ShowBans(); });
  On(actions->actPing, [this] {
    myPicker->Start(tr("Click the place to show everybody."),
                    [this](QPointF place) { myPings.Ask(place, Facet()); });
  });
  On(actions->actPingHere, [this] { myPings.Ask(places->MenuPlace(), Facet()); });
}

// Alarms, landmarks and recording.
void MapWindow::WireFeatureActions() {
  On(actions->actAlarms, [this] { myAlarms->AskForRules(); });
  On(actions->actDrawCircle, [this] { myAlarms->DrawCircle(); });
  connect(actions->actSilence, &QAction::toggled, this, [this](bool isOn) {
    myAlarms->SetSilenced(isOn);
    stsLine->ShowSilenced(isOn);
  });
  On(actions->actPlaceHere, [this] { myLandmarks->AskForNew(places->MenuPlace()); });
  On(actions->actPlaceLandmark, [this] { myLandmarks->PlaceByClick(); });
  On(actions->actLandmarkList, [this] { myLandmarks->ShowList(); });
  On(actions->actImportLandmarks, [this] { myLandmarks->AskForImport(); });
  On(actions->actExportLandmarks, [this] { myLandmarks->AskForExport(); });
  actions->actShowLandmarks->setChecked(myLandmarks->IsShown());
  connect(actions->actShowLandmarks, &QAction::toggled, this,
          [this](bool isShown) { myLandmarks->SetShown(isShown); });
  connect(actions->actRecord, &QAction::toggled, this, [this](bool isOn) {
    myRecording.SetOn(isOn);
    stsLine->ShowRecording(isOn);
  });
  myRecording.Failed = [this] { actions->actRecord->setChecked(false); };
  actions->actRecord->setChecked(myRecording.IsOn());
}

// What the user has begun for a place must not change the next one.
void MapWindow::EndTasks() {
  myPicker->Cancel();
  for (QDialog* dialog : findChildren<QDialog*>()) {
    // A file dialog runs inside of a method of its owner, which has kept its place. Recordings
    // belong to no place.
    const bool stays = dialog->findChild<QFileDialog*>() != nullptr || myRecording.Owns(*dialog);
    if (dialog->isModal() && dialog->isVisible() && !stays) dialog->reject();
  }
}

void MapWindow::closeEvent(QCloseEvent*) {
  myLayout->Save();
  myConnection.Close();
}

void MapWindow::ShowState() {
  const State state = myConnection.CurrentState();
  myHighlights.ownName = myConnection.CurrentDestination().account.userName;
  const bool isOnline = state == State::Online;
  if (!std::exchange(myIsOnline, isOnline) && isOnline) {
    const std::string& network = myConnection.CurrentDestination().account.network;
    txtMessages->Add(tr("You are in the network %1.").arg(DisplayText(network)));
    myReportedIncomplete = false;
    myOwnPosition.SendAgain();
  }
  // After a loss or a kick the map stays as it was.
  if (!isOnline && myConnection.Others().Count() == 0) {
    myShowsAllNext = !map->IsFollowing();
    myFittedFacets.clear();
  }
  if (isOnline || state == State::Offline) ShowOwn();
  EnableActions();
}

void MapWindow::ShowOwn() {
  const bool isHere = myConnection.CurrentState() != State::Offline;
  myHighlights.own = myOwnPosition.Shown();
  pnlMembers->ShowOwn(isHere ? myConnection.CurrentDestination().account.userName : std::string(),
                      myHighlights.own);
  map->Refresh();
}

void MapWindow::Select(const Member* member) {
  myHighlights.selected = member;
  mySelected = member == nullptr ? std::string() : member->name;
  map->Refresh();
  EnableActions();
}

void MapWindow::Forget(const Member& member) {
  if (myHighlights.followed == &member) myHighlights.followed = nullptr;
  if (myHighlights.selected != &member) return;
  myHighlights.selected = nullptr;
  EnableActions();
}

// After its return, and when the filter lets it through again.
void MapWindow::SelectAgain() {
  const Member* member = mySelected.empty() ? nullptr : myConnection.Others().Find(mySelected);
  if (member == nullptr || (member == myHighlights.selected && pnlMembers->HasSelection())) return;
  pnlMembers->Select(member);
  Select(member);
}

void MapWindow::EnableActions() {
  const State state = myConnection.CurrentState();
  const bool hasMember = myHighlights.selected != nullptr;
  actions->actDisconnect->setEnabled(state != State::Offline);
  actions->actShare->setEnabled(mySharing->CanShare());
  for (QAction* action : {actions->actTrail, actions->actKick, actions->actBan})
    action->setEnabled(hasMember);
  actions->actCopy->setEnabled(hasMember && myHighlights.selected->hasPlace);
  actions->actShowMe->setEnabled(myHighlights.own.has_value());
  actions->actFollow->setEnabled(hasMember || map->IsFollowing());
  actions->actFollow->setChecked(map->IsFollowing() &&
                                 (!hasMember || myHighlights.selected == myHighlights.followed));
  actions->actStop->setEnabled(map->IsFollowing() || myLayout->IsCompact());
  const Marker* marker = myBoard.Find(myHighlights.selected);
  actions->actTrail->setChecked(marker != nullptr && marker->hasTrail);
  actions->mnuAdministration->menuAction()->setVisible(myConnection.IsAdministrator());
  actions->actPingHere->setVisible(myConnection.IsAdministrator());
}

void MapWindow::ToggleFollow() {
  if (myHighlights.selected != nullptr && myHighlights.selected != myHighlights.followed) {
    map->Follow(*myHighlights.selected);
  } else {
    map->StopFollowing();
  }
  EnableActions();
}

void MapWindow::OpenMemberMenu(QPoint at) {
  QMenu* menu = actions->mnuMember;
  if (myConnection.IsAdministrator()) {
    menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addActions({actions->actFollow, actions->actTrail, actions->actCopy});
    menu->addSeparator();
    menu->addActions({actions->actKick, actions->actBan});
  }
  menu->popup(at);
}

// ---- facets

void MapWindow::ListFacets() {
  cmbFacet->List(myBoard, mySettings.Pictured(), Facet());
  if (myShowsAllNext && !myBoard.Extent(Facet()).isNull()) {
    myShowsAllNext = false;
    myFittedFacets.insert(Facet());
    map->ShowAll();
  }
  if (myConnection.Others().IsIncomplete() && !std::exchange(myReportedIncomplete, true))
    txtMessages->Add(tr("Not all members are shown: there are too many, or names are too long."));
}

// The user's choice. The keys belong to the map again.
void MapWindow::ChooseFacet(int facet) {
  map->StopFollowing();
  if (myFittedFacets.insert(facet).second) myShowsAllNext = true;
  ShowFacet(facet);
  map->setFocus();
}

void MapWindow::ShowFacet(int facet) {
  if (myScene && facet == Facet()) return;
  // The old scene is destroyed after the view has the new one.
  auto scene = std::make_unique<MapScene>(myBoard, myHighlights, facet);
  myAlarms->ShowOn(*scene);
  map->ShowScene(*scene);
  myScene = std::move(scene);
  myLandmarks->ShowIn(*myScene);
  myPings.ShowIn(*myScene);
  myPictures->Show();
  ListFacets();
}

}  // namespace corvane::map
