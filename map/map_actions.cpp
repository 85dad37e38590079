#include "map/map_actions.h"

#include <QKeyEvent>

namespace corvane::map {
namespace {

// In an open menu a letter chooses an item, even if it is a shortcut of the map.
class Menu : public QMenu {
 public:
  using QMenu::QMenu;

 protected:
  bool event(QEvent* event) override {
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->modifiers() == Qt::NoModifier) {
      event->accept();
      return true;
    }
    return QMenu::event(event);
  }
};

QMenu* AddMenu(QMenuBar& bar, const QString& title) {
  auto* const menu = new Menu(title, &bar);
  bar.addMenu(menu);
  return menu;
}

}  // namespace

MapActions::MapActions(QMenuBar& bar, QWidget& map) {
  AddFileMenu(bar);
  AddViewMenu(bar, map);
  AddMemberMenu(bar, map);
  QMenu* landmarks = AddMenu(bar, tr("&Landmarks"));
  actPlaceLandmark = Add(landmarks, "actPlaceLandmark", tr("&Place Landmark..."));
  actLandmarkList =
      Add(landmarks, "actLandmarkList", tr("&List..."), {QKeySequence(Qt::CTRL | Qt::Key_L)});
  actShowLandmarks = Add(landmarks, "actShowLandmarks", tr("&Show on the Map"));
  actShowLandmarks->setCheckable(true);
  landmarks->addSeparator();
  actImportLandmarks = Add(landmarks, "actImportLandmarks", tr("&Import..."));
  actExportLandmarks = Add(landmarks, "actExportLandmarks", tr("&Export..."));

  QMenu* alarms = AddMenu(bar, tr("Ala&rms"));
  actAlarms =
      Add(alarms, "actAlarms", tr("&Alarms..."), {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A)});
  actDrawCircle = Add(alarms, "actDrawCircle", tr("&Draw Circle"));
  actSilence = Add(alarms, "actSilence", tr("&Silence"), {QKeySequence(Qt::CTRL | Qt::Key_M)});
  actSilence->setCheckable(true);

  mnuPlace = new Menu(&map);
  actCopyPlace = Add(mnuPlace, "actCopyPlace", tr("&Copy Coordinates"));
  actPlaceHere = Add(mnuPlace, "actPlaceHere", tr("Place &Landmark Here..."));
  actPingHere = Add(mnuPlace, "actPingHere", tr("&Ping Here..."));

  mnuAdministration = AddMenu(bar, tr("&Administration"));
  actKick = Add(mnuAdministration, "actKick", tr("&Kick..."));
  actBan = Add(mnuAdministration, "actBan", tr("&Ban..."));
  mnuAdministration->addSeparator();
  actMessage = Add(mnuAdministration, "actMessage", tr("&Message to the Network..."));
  actPing = Add(mnuAdministration, "actPing", tr("&Ping..."));
  actBans = Add(mnuAdministration, "actBans", tr("B&ans..."));

  QMenu* help = AddMenu(bar, tr("&Help"));
  actKeys = Add(help, "actKeys", tr("&Keys"), {Qt::Key_F1});
  actAbout = Add(help, "actAbout", tr("&About Corvane Map"));
  actAbout->setMenuRole(QAction::AboutRole);
}

void MapActions::AddFileMenu(QMenuBar& bar) {
  QMenu* file = AddMenu(bar, tr("&File"));
  actConnect = Add(file, "actConnect", tr("&Connect..."), {QKeySequence(Qt::CTRL | Qt::Key_O)});
  actDisconnect = Add(file, "actDisconnect", tr("&Disconnect"));
  file->addSeparator();
  actOpenPlace = Add(file, "actOpenPlace", tr("&Open Place..."));
  actShare = Add(file, "actShare", tr("&Share This Place..."));
  actRecord = Add(file, "actRecord", tr("&Record"));
  actRecord->setCheckable(true);
  actRecordings = Add(file, "actRecordings", tr("R&ecordings..."));
  file->addSeparator();
  actQuit = Add(file, "actQuit", tr("&Quit"), {QKeySequence(Qt::CTRL | Qt::Key_Q)});
  actQuit->setMenuRole(QAction::QuitRole);
}

void MapActions::AddViewMenu(QMenuBar& bar, QWidget& map) {
  QMenu* view = AddMenu(bar, tr("&View"));
  actZoomIn = Add(view, "actZoomIn", tr("Zoom &In"), {Qt::Key_Plus, Qt::Key_Equal}, &map);
  actZoomOut = Add(view, "actZoomOut", tr("Zoom &Out"), {Qt::Key_Minus}, &map);
  actShowAll = Add(view, "actShowAll", tr("&Everybody"), {Qt::Key_Home}, &map);
  actShowMe = Add(view, "actShowMe", tr("&Me"), {Qt::Key_M}, &map);
  actGoTo = Add(view, "actGoTo", tr("&Go to Coordinates..."), {QKeySequence(Qt::CTRL | Qt::Key_G)});
  actStop = Add(view, "actStop", tr("&Stop Following"), {Qt::Key_Escape}, &map);
  view->addSeparator();
  actPicture = Add(view, "actPicture", tr("&Picture of This Facet..."));
  view->addSeparator();
  actMembers = Add(view, "actMembers", tr("&List of Members"));
  mnuColumns = view->addMenu(tr("&Columns of the List"));
  actMessages = Add(view, "actMessages", tr("Mess&ages"));
  view->addSeparator();
  actCompact = Add(view, "actCompact", tr("Compact &View"), {Qt::Key_F11});
  actOnTop = Add(view, "actOnTop", tr("Always on &Top"));
  for (QAction* action : {actMembers, actMessages, actCompact, actOnTop})
    action->setCheckable(true);
  QMenu* opacity = view->addMenu(tr("Opacit&y"));
  grpOpacity = new QActionGroup(opacity);
  for (const int percent : {100, 85, 70, 55, 40}) {
    QAction* action = opacity->addAction(tr("%1 %").arg(percent));
    action->setData(percent);
    action->setCheckable(true);
    grpOpacity->addAction(action);
  }
}

void MapActions::AddMemberMenu(QMenuBar& bar, QWidget& map) {
  mnuMember = AddMenu(bar, tr("&Member"));
  actFind = Add(mnuMember, "actFind", tr("F&ind..."), {QKeySequence(Qt::CTRL | Qt::Key_F)});
  actFollow = Add(mnuMember, "actFollow", tr("&Follow"), {Qt::Key_F}, &map);
  actFollow->setCheckable(true);
  actTrail = Add(mnuMember, "actTrail", tr("&Trail"), {Qt::Key_T}, &map);
  actTrail->setCheckable(true);
  actCopy = Add(mnuMember, "actCopy", tr("&Copy Coordinates"), {QKeySequence::Copy}, &map);
  mnuMember->addSeparator();
  actSend = Add(mnuMember, "actSend", tr("Send My &Position"));
  actSend->setCheckable(true);
}

QAction* MapActions::Add(QMenu* menu, const char* name, const QString& text,
                         const QList<QKeySequence>& keys, QWidget* onlyIn) {
  QAction* action = menu->addAction(text);
  action->setObjectName(QLatin1String(name));
  action->setShortcuts(keys);
  if (onlyIn != nullptr) {
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    onlyIn->addAction(action);
  } else {
    // A hidden menu bar does not take keys.
    menu->parentWidget()->window()->addAction(action);
  }
  return action;
}

}  // namespace corvane::map
