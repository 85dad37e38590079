#include "map/replay_window.h"

#include <algorithm>
#include <chrono>

#include <QDateTime>
#include <QHBoxLayout>
#include <QLocale>
#include <QShortcut>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "framework/text.h"
#include "framework/visible_text.h"

namespace corvane::map {
namespace {

using client::Member;

constexpr std::chrono::milliseconds kPlayInterval{33};
constexpr std::chrono::milliseconds kListInterval{500};
constexpr qint64 kSliderUnit = 100;  // ms

}  // namespace

ReplayWindow::ReplayWindow(const Recording& recording, const QString& settingsFile,
                           const QString& cacheFolder, QWidget& owner)
    : QWidget(&owner, Qt::Window),
      cmbFacet(new FacetBox(this)),
      map(new MapView(myBoard, myHighlights, this)),
      btnPlay(new QPushButton(this)),
      sldTime(new QSlider(Qt::Horizontal, this)),
      cmbSpeed(new QComboBox(this)),
      lblTime(new QLabel(this)),
      mySettings(settingsFile),
      myPictures(cacheFolder),
      myPlayer(recording, myMembers),
      myTime(recording.Begin()) {
  const RecordingSource& source = recording.Source();
  // Without any server, this would give the recording's what belongs to the first one.
  if (!mySettings.CurrentPlace().host.isEmpty())
    mySettings.SetCurrentPlace({source.host, source.port, source.network});
  setObjectName(QStringLiteral("ReplayWindow"));
  setAttribute(Qt::WA_DeleteOnClose);
  const QString begin =
      QLocale().toString(QDateTime::fromMSecsSinceEpoch(recording.Begin()), QLocale::ShortFormat);
  setWindowTitle(
      tr("Replay: %1, %2").arg(VisibleText(TextFromDisplay(source.network), 100), begin));
  for (const int speed : {1, 2, 5, 10, 30, 60})
    cmbSpeed->addItem(tr("%1 x").arg(speed), speed);
  sldTime->setMaximum(
      static_cast<int>((recording.End() - recording.Begin() + kSliderUnit - 1) / kSliderUnit));
  sldTime->setSingleStep(1000 / kSliderUnit);
  sldTime->setPageStep(std::max(10 * sldTime->singleStep(), sldTime->maximum() / 20));
  LayOut();
  WireMap();
  connect(btnPlay, &QPushButton::clicked, this, [this] { Play(!myTimer.isActive()); });
  connect(sldTime, &QSlider::valueChanged, this,
          [this](int value) { JumpTo(myPlayer.Played().Begin() + value * kSliderUnit); });
  connect(&myTimer, &QTimer::timeout, this, [this] { Advance(); });
  connect(&myFacetTimer, &QTimer::timeout, this, [this] { ListFacets(); });
  myFacetTimer.start(kListInterval);
  myPictures.Completed = [this] { ShowPicture(); };
  ShowFacet(0);
  JumpTo(myTime);
  if (!myBoard.All().empty()) ShowFacet(myBoard.All().front()->facet);
  map->ShowAll();
  Play(true);
}

// The view uses the other members.
ReplayWindow::~ReplayWindow() {
  delete map;
}

void ReplayWindow::LayOut() {
  map->setAccessibleName(tr("Map"));
  cmbFacet->setAccessibleName(tr("Facet"));
  cmbFacet->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  sldTime->setAccessibleName(tr("Time"));
  cmbSpeed->setAccessibleName(tr("Speed"));
  lblTime->setTextFormat(Qt::PlainText);
  // The button's text changes; its width does not.
  btnPlay->setText(tr("&Pause"));
  btnPlay->setMinimumWidth(btnPlay->sizeHint().width());

  auto* label = new QLabel(tr("Fa&cet:"), this);
  label->setBuddy(cmbFacet);
  auto* controls = new QHBoxLayout;
  controls->setContentsMargins(8, 4, 8, 8);
  controls->addWidget(btnPlay);
  controls->addWidget(sldTime, 1);
  controls->addWidget(lblTime);
  controls->addWidget(cmbSpeed);
  controls->addWidget(label);
  controls->addWidget(cmbFacet);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(map, 1);
  column->addLayout(controls);
  map->setFocus();
  resize(900, 640);
}

void ReplayWindow::WireMap() {
  map->Now = [this] { return Player::ClockAt(myTime); };
  map->FacetRequested = [this](int facet) { ShowFacet(facet); };
  map->MemberClicked = [this](const Member& member) { Select(&member); };
  map->PlaceClicked = [this](QPointF) { Select(nullptr); };
  myBoard.MemberRemoved = [this](const Member& member) {
    if (myHighlights.followed == &member) myHighlights.followed = nullptr;
    if (myHighlights.selected == &member) myHighlights.selected = nullptr;
  };
  connect(cmbFacet, &QComboBox::activated, this,
          [this] { ShowFacet(cmbFacet->currentData().toInt()); });
  const auto on = [this](Qt::Key key, auto act) {
    connect(new QShortcut(key, map, nullptr, nullptr, Qt::WidgetShortcut), &QShortcut::activated,
            this, act);
  };
  on(Qt::Key_Space, [this] { btnPlay->click(); });
  on(Qt::Key_Plus, [this] { map->ZoomIn(); });
  on(Qt::Key_Minus, [this] { map->ZoomOut(); });
  on(Qt::Key_Home, [this] { map->ShowAll(); });
  on(Qt::Key_Escape, [this] { map->StopFollowing(); });
  on(Qt::Key_F, [this] {
    const bool follows = myHighlights.selected == myHighlights.followed;
    if (myHighlights.selected == nullptr || follows) return map->StopFollowing();
    map->Follow(*myHighlights.selected);
  });
}

void ReplayWindow::Select(const Member* member) {
  mySelected = member == nullptr ? std::string() : member->name;
  myHighlights.selected = member;
  map->Refresh();
}

// ---- time

void ReplayWindow::Play(bool isOn) {
  if (isOn && myTime >= myPlayer.Played().End()) JumpTo(myPlayer.Played().Begin());
  btnPlay->setText(isOn ? tr("&Pause") : tr("&Play"));
  mySinceAdvance.start();
  if (isOn) {
    myTimer.start(kPlayInterval);
  } else {
    myTimer.stop();
  }
}

void ReplayWindow::Advance() {
  const qint64 passed = mySinceAdvance.restart() * cmbSpeed->currentData().toInt();
  myTime = std::min(myTime + passed, myPlayer.Played().End());
  myPlayer.PlayTo(myTime);
  ShowTime();
  if (myTime == myPlayer.Played().End()) Play(false);
}

void ReplayWindow::JumpTo(qint64 time) {
  myTime = std::min(time, myPlayer.Played().End());
  myPlayer.JumpTo(myTime);
  ShowTime();
}

void ReplayWindow::ShowTime() {
  const qint64 begin = myPlayer.Played().Begin();
  const QSignalBlocker blocker(sldTime);
  sldTime->setValue(static_cast<int>((myTime - begin) / kSliderUnit));
  const QString time =
      QDateTime::fromMSecsSinceEpoch(myTime).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
  lblTime->setText(myPlayer.IsDamaged() ? tr("%1 (damaged)").arg(time) : time);
  if (myHighlights.selected == nullptr && !mySelected.empty())
    myHighlights.selected = myMembers.Find(mySelected);
}

// ---- facets

void ReplayWindow::ShowFacet(int facet) {
  if (myScene && facet == myScene->Facet()) return;
  // The old scene is destroyed after the view has the new one.
  auto scene = std::make_unique<MapScene>(myBoard, myHighlights, facet);
  map->ShowScene(*scene);
  myScene = std::move(scene);
  ShowPicture();
  ListFacets();
}

void ReplayWindow::ListFacets() {
  cmbFacet->List(myBoard, mySettings.Pictured(), myScene->Facet());
}

void ReplayWindow::ShowPicture() {
  const MapPicture picture = mySettings.PictureOf(myScene->Facet());
  std::optional<QString> folder;
  if (picture.kind != MapPicture::Kind::None) folder = myPictures.FolderFor(picture);
  if (folder) {
    myScene->ShowPicture(picture, *folder);
  } else {
    myScene->ShowGrid();
  }
}

}  // namespace corvane::map
