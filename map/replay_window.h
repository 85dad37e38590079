#pragma once

#include <memory>
#include <string>

#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTimer>
#include <QWidget>

#include "map/facet_box.h"
#include "map/map_view.h"
#include "map/pictures/map_pictures.h"
#include "map/recording/player.h"
#include "map/settings.h"

namespace corvane::map {

// Replays a recording on a map of its own: a slider over its time, and a choice of speeds. Deletes
// itself when closed. Times are milliseconds since 1970 (UTC).
class ReplayWindow : public QWidget {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::ReplayWindow)

 public:
  ReplayWindow(const Recording& recording, const QString& settingsFile, const QString& cacheFolder,
               QWidget& owner);
  ~ReplayWindow() override;

  qint64 Time() const { return myTime; }
  const client::Members& Shown() const { return myMembers; }

  // The controls, in tab order. The window owns them.
  FacetBox* cmbFacet;
  MapView* map;
  QPushButton* btnPlay;
  QSlider* sldTime;
  QComboBox* cmbSpeed;
  QLabel* lblTime;

 private:
  void LayOut();
  void WireMap();
  void Play(bool isOn);
  void Advance();
  void JumpTo(qint64 time);
  void ShowTime();
  void ShowFacet(int facet);
  void ListFacets();
  void ShowPicture();
  void Select(const client::Member* member);

  Settings mySettings;
  client::Members myMembers;
  MarkerBoard myBoard{myMembers};
  Highlights myHighlights;
  std::string mySelected;  // also while it is not there
  MapPictures myPictures;
  std::unique_ptr<MapScene> myScene;
  Player myPlayer;
  qint64 myTime;
  QElapsedTimer mySinceAdvance;
  QTimer myTimer;
  QTimer myFacetTimer;
};

}  // namespace corvane::map
