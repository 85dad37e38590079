#pragma once

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>

namespace corvane::map {

// The window's actions and menus. Shortcuts without Ctrl work in the map, and but for Home in the
// list of members; function keys work everywhere.
class MapActions {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MapActions)

 public:
  // Fills the menu bar. The window owns the actions.
  MapActions(QMenuBar& bar, QWidget& map);

  QAction* actConnect;
  QAction* actDisconnect;
  QAction* actOpenPlace;
  QAction* actShare;
  QAction* actRecord;
  QAction* actRecordings;
  QAction* actQuit;
  QAction* actZoomIn;
  QAction* actZoomOut;
  QAction* actShowAll;
  QAction* actShowMe;
  QAction* actGoTo;
  QAction* actStop;
  QAction* actPicture;
  QAction* actMembers;
  QAction* actMessages;
  QAction* actCompact;
  QAction* actOnTop;
  QActionGroup* grpOpacity;  // the data of each action are percent
  QAction* actFind;
  QAction* actFollow;
  QAction* actTrail;
  QAction* actCopy;
  QAction* actSend;
  QAction* actPlaceLandmark;
  QAction* actLandmarkList;
  QAction* actShowLandmarks;
  QAction* actImportLandmarks;
  QAction* actExportLandmarks;
  QAction* actAlarms;
  QAction* actDrawCircle;
  QAction* actSilence;
  QAction* actCopyPlace;
  QAction* actPlaceHere;
  QAction* actPingHere;
  QAction* actKick;
  QAction* actBan;
  QAction* actMessage;
  QAction* actPing;
  QAction* actBans;
  QAction* actKeys;
  QAction* actAbout;
  QMenu* mnuColumns;
  QMenu* mnuMember;
  QMenu* mnuPlace;  // of a place beside all markers; not in the menu bar
  QMenu* mnuAdministration;

 private:
  void AddFileMenu(QMenuBar& bar);
  void AddViewMenu(QMenuBar& bar, QWidget& map);
  void AddMemberMenu(QMenuBar& bar, QWidget& map);
  static QAction* Add(QMenu* menu, const char* name, const QString& text,
                      const QList<QKeySequence>& keys = {}, QWidget* onlyIn = nullptr);
};

}  // namespace corvane::map
