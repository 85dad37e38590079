#include "map/facet_pictures.h"

namespace corvane::map {

FacetPictures::FacetPictures(const QString& cacheFolder, Settings& settings, MapView& map,
                             StatusLine& line, MessagesPane& messages, QWidget& window)
    : myCacheFolder(cacheFolder),
      mySettings(settings),
      myMap(map),
      myMessages(messages),
      myWindow(window),
      myPictures(cacheFolder),
      myTrialPictures(cacheFolder) {
  myPictures.Completed = [this] { Show(); };
  myPictures.Progressed = [&line](int percent) { line.ShowProgress(percent); };
  myPictures.Failed = [this](const QString& text) { myMessages.Add(text); };
  myTrialPictures.Completed = [this] { TryNext(); };
  myTrialPictures.Progressed = myPictures.Progressed;
  myTrialPictures.Failed = [this](const QString& text) {
    myMessages.Add(text);
    myTrials.pop_front();
    TryNext();
  };
}

void FacetPictures::Show() {
  MapScene& scene = *myMap.Scene();
  const MapPicture picture = mySettings.PictureOf(scene.Facet());
  if (picture.kind == MapPicture::Kind::None) {
    myPictures.Stop();
    scene.ShowGrid();
    return;
  }
  const std::optional<QString> folder = myPictures.FolderFor(picture);
  if (!folder) {
    scene.ShowGrid();
  } else if (!scene.ShowPicture(picture, *folder)) {
    myMessages.Add(PictureDialog::NoTilesText(*folder));
  } else if (Shown) {
    Shown();
  }
}

void FacetPictures::Set(const PlaceKey& place, int facet, const MapPicture& picture) {
  myTrials.push_back({place, facet, picture});
  if (myTrials.size() == 1) TryNext();
}

void FacetPictures::TryNext() {
  while (!myTrials.empty()) {
    const auto [place, facet, picture] = myTrials.front();
    const std::optional<QString> folder = myTrialPictures.FolderFor(picture);
    if (!folder) return;  // it is being cut
    const bool works =
        picture.kind == MapPicture::Kind::None || TilePyramid::Open(*folder).has_value();
    myTrials.pop_front();
    works ? Store(place, facet, picture) : myMessages.Add(PictureDialog::NoTilesText(*folder));
  }
}

// The map may show another place meanwhile.
void FacetPictures::Store(const PlaceKey& place, int facet, const MapPicture& picture) {
  // What belongs to no server is the first one's.
  mySettings.SetPictureOf(place.host.isEmpty() ? mySettings.CurrentPlace() : place, facet, picture);
  if (facet == myMap.Scene()->Facet()) Show();
}

void FacetPictures::Ask() {
  const int facet = myMap.Scene()->Facet();
  auto* dialog = new PictureDialog(facet, mySettings.PictureOf(facet), myCacheFolder, myWindow);
  dialog->Chosen = [this, place = mySettings.CurrentPlace(), facet](const MapPicture& picture) {
    Store(place, facet, picture);
  };
  dialog->open();
}

}  // namespace corvane::map
