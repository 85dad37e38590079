#include "map/landmarks.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QHelpEvent>
#include <QMessageBox>
#include <QSaveFile>
#include <QToolTip>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/landmark_dialog.h"

namespace corvane::map {
namespace {

constexpr const char* kHidden = "landmarks hidden";

QString Shown(const QString& text) {
  return VisibleText(TextFromDisplay(text));
}

GeoJsonContent ReadGeoJson(const QString& name) {
  QFile file(name);
  // Opening a pipe would block until it has a writer.
  if (!QFileInfo(name).isFile()) return {{}, 0, Landmarks::tr("there is no such file")};
  if (!file.open(QFile::ReadOnly)) return {{}, 0, file.errorString()};
  const QByteArray json = file.read(kMaxGeoJson + 1);
  if (json.size() > kMaxGeoJson)
    return {{}, 0, Landmarks::tr("it is larger than %1 MiB").arg(kMaxGeoJson >> 20)};
  return FromGeoJson(json);
}

}  // namespace

Landmarks::Landmarks(Settings& settings, MapView& map, PlacePicker& picker, MessagesPane& messages,
                     QWidget& window)
    : mySettings(settings),
      myMap(map),
      myPicker(picker),
      myMessages(messages),
      myWindow(window),
      myBoard(settings),
      myIsShown(settings.Stored(kHidden).isEmpty()) {
  myChanged = myBoard.Changed.Connect([this] {
    if (myItem != nullptr) myItem->Reload();
  });
  map.viewport()->installEventFilter(this);
}

void Landmarks::ShowIn(MapScene& scene) {
  myItem = new LandmarksItem(myBoard, scene);
  scene.addItem(myItem);
  myItem->setVisible(myIsShown);
}

void Landmarks::SetShown(bool isShown) {
  myIsShown = isShown;
  mySettings.Store(kHidden, isShown ? "" : "1");
  if (myItem != nullptr) myItem->setVisible(isShown);
}

const Landmark* Landmarks::LandmarkAt(QPoint inView) const {
  if (myItem == nullptr || !myIsShown) return nullptr;
  return myItem->LandmarkAt(inView, myMap.viewportTransform());
}

QWidget& Landmarks::Owner() const {
  return myList && myList->isActiveWindow() ? *myList : myWindow;
}

void Landmarks::OpenMenu(const Landmark& landmark, QPoint globalPosition) {
  auto* menu = new QMenu(&myWindow);
  menu->setObjectName(QStringLiteral("mnuLandmark"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addAction(tr("&Edit Landmark..."), this, [this, landmark] { Edit(landmark); });
  menu->addAction(tr("&Move Landmark"), this, [this, landmark] { Move(landmark); });
  menu->addAction(tr("&Delete Landmark..."), this, [this, landmark] { AskToDelete(landmark); });
  menu->popup(globalPosition);
}

void Landmarks::PlaceByClick() {
  myPicker.Start(tr("Click where the landmark goes."), [this](QPointF place) { AskForNew(place); });
}

void Landmarks::AskForNew(QPointF place) {
  Landmark landmark;
  landmark.icon = myLast.icon;
  landmark.colour = myLast.colour;
  landmark.facet = myMap.Scene()->Facet();
  landmark.at = place;
  auto* dialog = new LandmarkDialog(tr("New Landmark"), landmark, myWindow);
  dialog->Confirmed = [this](const Landmark& now) { Add(now); };
  dialog->open();
}

void Landmarks::Add(const Landmark& landmark) {
  myLast = landmark;
  if (!myBoard.Add({landmark}))
    myMessages.Add(tr("There are already %1 landmarks.").arg(Landmark::kMaxCount));
}

void Landmarks::Edit(const Landmark& landmark) {
  auto* dialog = new LandmarkDialog(tr("Landmark"), landmark, Owner());
  dialog->Confirmed = [this, landmark](const Landmark& now) { myBoard.Replace(landmark, now); };
  dialog->open();
}

void Landmarks::Move(const Landmark& landmark) {
  myPicker.Start(tr("Click where the landmark goes."), [this, landmark](QPointF place) {
    Landmark now = landmark;
    now.at = place;
    now.facet = myMap.Scene()->Facet();
    myBoard.Replace(landmark, now);
  });
}

void Landmarks::AskToDelete(const Landmark& landmark) {
  auto* question = new QMessageBox(QMessageBox::Question, tr("Delete Landmark"),
                                   tr("Delete the landmark \"%1\"?").arg(Shown(landmark.name)),
                                   QMessageBox::Cancel, &Owner());
  question->setObjectName(QStringLiteral("DeleteQuestion"));
  question->setAttribute(Qt::WA_DeleteOnClose);
  question->setTextFormat(Qt::PlainText);
  const QPushButton* btnDelete = question->addButton(tr("&Delete"), QMessageBox::AcceptRole);
  connect(btnDelete, &QPushButton::clicked, this, [this, landmark] { myBoard.Remove(landmark); });
  question->open();
}

void Landmarks::ShowList() {
  if (!myList) {
    myList = new LandmarkList(myBoard, myWindow);
    myList->setAttribute(Qt::WA_DeleteOnClose);
    myList->Chosen = [this](const Landmark& landmark) {
      if (PlaceRequested) PlaceRequested(landmark.at, landmark.facet);
    };
    myList->EditRequested = [this](const Landmark& landmark) { Edit(landmark); };
    myList->DeleteRequested = [this](const Landmark& landmark) { AskToDelete(landmark); };
  }
  myList->show();
  myList->raise();
  myList->activateWindow();
}

void Landmarks::AskForImport() {
  const QString file = QFileDialog::getOpenFileName(&myWindow, tr("Import Landmarks"), {},
                                                    tr("GeoJSON (*.geojson *.json)"));
  if (!file.isEmpty()) Import(file);
}

void Landmarks::AskForExport() {
  const QString file = QFileDialog::getSaveFileName(
      &myWindow, tr("Export Landmarks"), QDir::home().filePath(QStringLiteral("landmarks.geojson")),
      tr("GeoJSON (*.geojson)"));
  if (!file.isEmpty()) Export(file);
}

void Landmarks::Import(const QString& file) {
  myBackground.Run([file] { return ReadGeoJson(file); },
                   [this, file, place = mySettings.CurrentPlace()](const GeoJsonContent& content) {
                     TakeImport(place, file, content);
                   });
}

void Landmarks::TakeImport(const PlaceKey& place, const QString& file,
                           const GeoJsonContent& content) {
  const auto fail = [&](const QString& why) {
    myMessages.Add(tr("%1 cannot be imported: %2.").arg(file, why));
  };
  if (!content.error.isEmpty()) return fail(content.error);
  if (place != mySettings.CurrentPlace()) return fail(tr("another network is shown by now"));
  const std::optional<qsizetype> added = myBoard.Add(content.landmarks);
  if (!added) return fail(tr("there would be more than %1 landmarks").arg(Landmark::kMaxCount));
  QString text = tr("%1 landmarks imported.").arg(*added);
  const qsizetype known = content.landmarks.size() - *added;
  if (known > 0) text += ' ' + tr("%1 were there already.").arg(known);
  if (content.skipped > 0)
    text += ' ' + tr("%1 others are no points on the map, or too many.").arg(content.skipped);
  myMessages.Add(text);
}

void Landmarks::Export(const QString& file) {
  // Replaces an older file only when all is written.
  QSaveFile output(file);
  const QByteArray json = ToGeoJson(myBoard.All());
  if (output.open(QSaveFile::WriteOnly) && output.write(json) == json.size() && output.commit()) {
    myMessages.Add(tr("%1 landmarks exported to %2.").arg(myBoard.All().size()).arg(file));
  } else {
    myMessages.Add(tr("%1 cannot be written: %2").arg(file, output.errorString()));
  }
}

bool Landmarks::eventFilter(QObject* watched, QEvent* event) {
  const bool isMenu = event->type() == QEvent::ContextMenu;
  if (!isMenu && event->type() != QEvent::ToolTip) return QObject::eventFilter(watched, event);
  const QPoint at = isMenu ? static_cast<QContextMenuEvent*>(event)->pos()
                           : static_cast<QHelpEvent*>(event)->pos();
  const Landmark* found = LandmarkAt(at);
  // Members lie above landmarks.
  if (found == nullptr || myMap.Scene()->Markers().MemberAt(at, myMap)) return false;
  const QPoint onScreen = myMap.viewport()->mapToGlobal(at);
  if (isMenu) {
    OpenMenu(*found, onScreen);
  } else {
    // As rich text, so that long lines are wrapped.
    QString text = Shown(found->name).toHtmlEscaped();
    for (const QString& line : found->note.split('\n'))
      text += "<br>" + Shown(line).toHtmlEscaped();
    QToolTip::showText(onScreen, "<qt>" + text + "</qt>", myMap.viewport());
  }
  return true;
}

}  // namespace corvane::map
