#pragma once

#include <deque>
#include <functional>

#include <QCoreApplication>
#include <QPointer>
#include <QWidget>

#include "map/map_view.h"
#include "map/messages_pane.h"
#include "map/picture_dialog.h"
#include "map/pictures/map_pictures.h"
#include "map/settings.h"
#include "map/status_line.h"

namespace corvane::map {

// The pictures of the facets: shows that of the map's scene, and takes a new one only after it has
// been cut, so that a broken picture never replaces one that works.
class FacetPictures {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::FacetPictures)

 public:
  // Borrows all but the folder. `window` owns the dialog.
  FacetPictures(const QString& cacheFolder, Settings& settings, MapView& map, StatusLine& line,
                MessagesPane& messages, QWidget& window);

  // The map's scene has its picture now.
  std::function<void()> Shown;

  // Shows the picture of the map's scene. Call it with each scene.
  void Show();
  // Stores the facet's picture for the place and shows it, after the ones given before. One that
  // does not work is reported to the messages.
  void Set(const PlaceKey& place, int facet, const MapPicture& picture);
  void Set(int facet, const MapPicture& picture) { Set(mySettings.CurrentPlace(), facet, picture); }
  // Opens the dialog for the facet of the map's scene.
  void Ask();

 private:
  void Store(const PlaceKey& place, int facet, const MapPicture& picture);
  void TryNext();

  struct Trial {
    PlaceKey place;
    int facet;
    MapPicture picture;
  };

  QString myCacheFolder;
  Settings& mySettings;
  MapView& myMap;
  MessagesPane& myMessages;
  QWidget& myWindow;
  MapPictures myPictures;
  MapPictures myTrialPictures;
  std::deque<Trial> myTrials;  // the first is being cut
};

}  // namespace corvane::map
