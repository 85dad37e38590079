#pragma once

#include <functional>

#include <QCoreApplication>
#include <QMenu>
#include <QObject>
#include <QPointer>

#include "map/landmark_board.h"
#include "map/landmark_list.h"
#include "map/landmarks_item.h"
#include "map/map_view.h"
#include "map/messages_pane.h"
#include "map/pictures/background.h"
#include "map/place_picker.h"
#include "map/places/geo_json.h"

namespace corvane::map {

// The user's work with landmarks: placing, editing, moving and deleting them on the map and in the
// list, import and export. Shows them in the map's scene, with notes as tool tips.
class Landmarks : public QObject {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Landmarks)

 public:
  // Borrows all five. `window` owns the dialogs.
  Landmarks(Settings& settings, MapView& map, PlacePicker& picker, MessagesPane& messages,
            QWidget& window);

  // The map has to show that place.
  std::function<void(QPointF place, int facet)> PlaceRequested;

  // Shows the facet's landmarks in its scene, until the next call or the scene's end.
  void ShowIn(MapScene& scene);
  void SetShown(bool isShown);
  bool IsShown() const { return myIsShown; }

  // Asks for the name and the rest of a landmark there.
  void AskForNew(QPointF place);
  // As AskForNew, with the next click on the map.
  void PlaceByClick();
  void ShowList();
  void AskForImport();
  void AskForExport();
  // These report to the messages. Import reads in the background; a file that cannot be imported
  // changes nothing.
  void Import(const QString& file);
  void Export(const QString& file);

  LandmarkBoard& Board() { return myBoard; }

 protected:
  // The tool tips and menus of landmarks on the map.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  const Landmark* LandmarkAt(QPoint inView) const;
  // Of a dialog: the list, if the user works there.
  QWidget& Owner() const;
  void OpenMenu(const Landmark& landmark, QPoint globalPosition);
  void Add(const Landmark& landmark);
  void Edit(const Landmark& landmark);
  void Move(const Landmark& landmark);
  void AskToDelete(const Landmark& landmark);
  void TakeImport(const PlaceKey& place, const QString& file, const GeoJsonContent& content);

  Settings& mySettings;
  MapView& myMap;
  PlacePicker& myPicker;
  MessagesPane& myMessages;
  QWidget& myWindow;
  LandmarkBoard myBoard;
  LandmarksItem* myItem = nullptr;  // the scene owns it
  QPointer<LandmarkList> myList;
  Landmark myLast;  // whose icon and colour the next one gets
  bool myIsShown = true;
  SignalConnection myChanged;
  Background myBackground;
};

}  // namespace corvane::map
