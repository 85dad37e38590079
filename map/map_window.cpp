#include "map/map_window.h"

#include <chrono>
#include <utility>

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QToolBar>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/accessible_map.h"
#include "map/picture_dialog.h"

namespace corvane::map {
namespace {

using client::Member;
using State = client::Connection::State;

constexpr std::chrono::milliseconds kFacetInterval{500};
// More than any map has. A server may report any number.
constexpr std::size_t kMaxFacets = 200;

}  // namespace

MapWindow::MapWindow(const QString& settingsFile, const QString& cacheFolder,
                     client::Connection::Timing timing)
    : txtMessages(new MessagesPane(this)),
      mySettings(settingsFile),
      myConnection(timing),
      myBoard(myConnection.Others()),
      myOwnPosition(myConnection),
      myConnector(myConnection, mySettings, *txtMessages, *this),
      myAdministration(myConnection, *txtMessages, *this),
      myPictures(cacheFolder),
      myRows(std::make_unique<QSplitter>(Qt::Vertical)) {
  setWindowTitle(tr("Corvane Map"));
  setObjectName(QStringLiteral("MapWindow"));
  InstallAccessibleMap();
  map = new MapView(myBoard, myHighlights, this);
  map->setObjectName(QStringLiteral("map"));
  map->setAccessibleName(tr("Map"));
  map->setAccessibleDescription(tr("The list of members shows the same as text"));
  cmbFacet = new QComboBox(this);
  barOwn = new OwnBar(myOwnPosition, this);
  pnlMembers = new MembersPanel(myConnection.Others(), this);
  stsLine = new StatusLine(myConnection, this);
  actions = std::make_unique<MapActions>(*menuBar(), *map);
  pnlMembers->lstMembers->addActions({actions->actFollow, actions->actTrail, actions->actStop});
  LayOut();
  WireConnection();
  WireMap();
  WireActions();
  RestoreLayout();
  ShowFacet(0);
  ShowState();
  map->setFocus();
}

void MapWindow::LayOut() {
  auto* facets = new QToolBar(tr("Facet"), this);
  facets->setObjectName(QStringLiteral("FacetBar"));
  auto* label = new QLabel(tr("Fa&cet:"), facets);
  label->setBuddy(cmbFacet);
  label->setContentsMargins(4, 0, 4, 0);
  facets->addWidget(label);
  facets->addWidget(cmbFacet);
  cmbFacet->setAccessibleName(tr("Facet"));
  cmbFacet->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  addToolBar(facets);
  addToolBar(barOwn);

  myColumns = new QSplitter(Qt::Horizontal);
  myColumns->addWidget(map);
  myColumns->addWidget(pnlMembers);
  myColumns->setStretchFactor(0, 1);
  myRows->addWidget(myColumns);
  myRows->addWidget(txtMessages);
  myRows->setStretchFactor(0, 1);
  for (QSplitter* splitter : {myColumns, myRows.get()})
    splitter->setChildrenCollapsible(false);
  setCentralWidget(myRows.get());
  setStatusBar(stsLine);
  QWidget* before = map;
  for (QWidget* next : std::initializer_list<QWidget*>{
           cmbFacet, barOwn->chkSend, pnlMembers->fldFilter, pnlMembers->lstMembers, txtMessages}) {
    setTabOrder(before, next);
    before = next;
  }
  resize(1180, 760);
  myColumns->setSizes({680, 500});
  myRows->setSizes({620, 110});
}

void MapWindow::WireConnection() {
  myStateChanged = myConnection.StateChanged.Connect([this] { ShowState(); });
  myConnection.MessageReceived = [this](std::string_view text) {
    txtMessages->Add(tr("Message: %1").arg(DisplayText(text)));
  };
  myPictures.Completed = [this] { ShowPicture(); };
  myPictures.Progressed = [this](int percent) { stsLine->ShowProgress(percent); };
  myPictures.Failed = [this](const QString& text) { txtMessages->Add(text); };
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
  map->PointerMoved = [this](std::optional<QPointF> place) { stsLine->ShowPlace(place); };
  map->FacetRequested = [this](int facet) { ShowFacet(facet); };
  map->FollowChanged = [this] {
    if (map->IsFollowing()) myShowsAllNext = false;
    EnableActions();
  };
  map->ArrowPressed = [this](int columns, int rows) {
    if (myOwnPosition.IsOn()) myOwnPosition.Step(columns, rows, Facet());
    return myOwnPosition.IsOn();
  };
  myOwnPosition.Changed = [this] {
    myHighlights.own = myOwnPosition.Shown();
    map->Refresh();
  };
  pnlMembers->Selected = [this](const Member* member) {
    Select(member);
    if (member == nullptr) return;
    myShowsAllNext = false;
    map->StopFollowing();
    map->CentreOn(*member);
  };
  pnlMembers->Activated = [this](const Member& member) {
    Select(&member);
    map->Follow(member);
  };
  pnlMembers->MenuRequested = [this](const Member&, QPoint at) { OpenMemberMenu(at); };
  connect(cmbFacet, &QComboBox::activated, this,
          [this] { ShowFacet(cmbFacet->currentData().toInt()); });
  connect(&myFacetTimer, &QTimer::timeout, this, [this] { ListFacets(); });
  myFacetTimer.start(kFacetInterval);
}

void MapWindow::WireActions() {
  const auto on = [this](QAction* action, auto act) {
    connect(action, &QAction::triggered, this, act);
  };
  // For actions on the selected member.
  const auto onMember = [this, &on](QAction* action, auto act) {
    on(action, [this, act] {
      if (myHighlights.selected != nullptr) act(*myHighlights.selected);
    });
  };
  on(actions->actConnect, [this] { AskWhere(); });
  on(actions->actDisconnect, [this] { myConnection.Close(); });
  on(actions->actQuit, [this] { close(); });
  on(actions->actZoomIn, [this] { map->ZoomIn(); });
  on(actions->actZoomOut, [this] { map->ZoomOut(); });
  on(actions->actShowAll, [this] { map->ShowAll(); });
  on(actions->actStop, [this] { map->StopFollowing(); });
  on(actions->actPicture, [this] { AskForPicture(); });
  on(actions->actFollow, [this] { ToggleFollow(); });
  onMember(actions->actTrail, [this](const Member& member) {
    myBoard.SetTrail(member, actions->actTrail->isChecked());
    EnableActions();
  });
  onMember(actions->actKick, [this](const Member& member) { myAdministration.Kick(member.name); });
  onMember(actions->actBan, [this](const Member& member) { myAdministration.Ban(member.name); });
  on(actions->actMessage, [this] { myAdministration.SendMessage(); });
  on(actions->actBans, [this] { myAdministration.ShowBans(); });
  connect(actions->actSend, &QAction::toggled, barOwn->chkSend, &QCheckBox::setChecked);
  connect(barOwn->chkSend, &QCheckBox::toggled, actions->actSend, &QAction::setChecked);
}

void MapWindow::RestoreLayout() {
  restoreGeometry(mySettings.Stored("window"));
  restoreState(mySettings.Stored("bars"));
  myColumns->restoreState(mySettings.Stored("columns"));
  myRows->restoreState(mySettings.Stored("rows"));
}

void MapWindow::SaveLayout() {
  mySettings.Store("window", saveGeometry());
  mySettings.Store("bars", saveState());
  mySettings.Store("columns", myColumns->saveState());
  mySettings.Store("rows", myRows->saveState());
}

void MapWindow::closeEvent(QCloseEvent* event) {
  SaveLayout();
  myConnection.Close();
  event->accept();
}

void MapWindow::ShowState() {
  const State state = myConnection.CurrentState();
  if (state == State::Online) {
    if (!std::exchange(myIsOnline, true)) {
      const std::string& network = myConnection.CurrentDestination().account.network;
      txtMessages->Add(tr("You are in the network %1.").arg(DisplayText(network)));
      myOwnPosition.SendAgain();
    }
  } else {
    myShowsAllNext = !map->IsFollowing();
    myReportedIncomplete = false;
    myIsOnline = false;
  }
  EnableActions();
}

void MapWindow::Select(const Member* member) {
  myHighlights.selected = member;
  map->Refresh();
  EnableActions();
}

void MapWindow::Forget(const Member& member) {
  if (myHighlights.followed == &member) myHighlights.followed = nullptr;
  if (myHighlights.selected == &member) Select(nullptr);
}

void MapWindow::EnableActions() {
  const State state = myConnection.CurrentState();
  const bool hasMember = myHighlights.selected != nullptr;
  actions->actDisconnect->setEnabled(state != State::Offline);
  for (QAction* action : {actions->actTrail, actions->actKick, actions->actBan})
    action->setEnabled(hasMember);
  actions->actFollow->setEnabled(hasMember || map->IsFollowing());
  actions->actStop->setEnabled(map->IsFollowing());
  const Marker* marker = myBoard.Find(myHighlights.selected);
  actions->actTrail->setChecked(marker != nullptr && marker->hasTrail);
  actions->mnuAdministration->menuAction()->setVisible(myConnection.IsAdministrator());
}

void MapWindow::ToggleFollow() const {
  if (myHighlights.selected != nullptr && myHighlights.selected != myHighlights.followed) {
    map->Follow(*myHighlights.selected);
  } else {
    map->StopFollowing();
  }
}

void MapWindow::OpenMemberMenu(QPoint at) {
  QMenu* menu = actions->mnuMember;
  if (myConnection.IsAdministrator()) {
    menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addActions({actions->actFollow, actions->actTrail});
    menu->addSeparator();
    menu->addActions({actions->actKick, actions->actBan});
  }
  menu->popup(at);
}

// ---- facets and their pictures

void MapWindow::ListFacets() {
  std::set<int> facets{0, Facet()};
  for (const int facet : mySettings.Pictured())
    facets.insert(facet);
  for (const Marker* marker : myBoard.All()) {
    if (facets.size() < kMaxFacets) facets.insert(marker->facet);
  }
  if (facets != myFacets) {
    cmbFacet->clear();
    for (const int facet : facets)
      cmbFacet->addItem(QString::number(facet), facet);
    myFacets = std::move(facets);
  }
  cmbFacet->setCurrentIndex(cmbFacet->findData(Facet()));

  if (myShowsAllNext && !myBoard.Extent(Facet()).isNull()) {
    myShowsAllNext = false;
    map->ShowAll();
  }
  if (myConnection.Others().IsIncomplete() && !std::exchange(myReportedIncomplete, true))
    txtMessages->Add(tr("Not all members are shown: there are too many, or names are too long."));
}

void MapWindow::ShowFacet(int facet) {
  if (myScene && facet == Facet()) return;
  // The old scene is destroyed after the view has the new one.
  auto scene = std::make_unique<MapScene>(myBoard, myHighlights, facet);
  map->ShowScene(*scene);
  myScene = std::move(scene);
  ShowPicture();
  ListFacets();
}

void MapWindow::ShowPicture() {
  const MapPicture picture = mySettings.PictureOf(Facet());
  if (picture.kind == MapPicture::Kind::None) {
    myPictures.Stop();
    myScene->ShowGrid();
    return;
  }
  const std::optional<QString> folder = myPictures.FolderFor(picture);
  if (!folder) {
    myScene->ShowGrid();
  } else if (!myScene->ShowPicture(picture, *folder)) {
    txtMessages->Add(tr("There are no tiles in %1.").arg(*folder));
  } else if (myBoard.Extent(Facet()).isNull()) {
    map->ShowAll();
  }
}

void MapWindow::SetPicture(int facet, const MapPicture& picture) {
  mySettings.SetPictureOf(facet, picture);
  if (facet == Facet()) ShowPicture();
}

void MapWindow::AskForPicture() {
  const int facet = Facet();
  auto* dialog = new PictureDialog(facet, mySettings.PictureOf(facet), *this);
  dialog->Chosen = [this, facet](const MapPicture& picture) { SetPicture(facet, picture); };
  dialog->open();
}

}  // namespace corvane::map
