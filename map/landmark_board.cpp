#include "map/landmark_board.h"

#include <QSet>

namespace corvane::map {

LandmarkBoard::LandmarkBoard(Settings& settings)
    : mySettings(settings), myLandmarks(settings.Landmarks()) {
  myPlaceChanged = settings.PlaceChanged.Connect([this] {
    myLandmarks = mySettings.Landmarks();
    Changed();
  });
}

std::optional<qsizetype> LandmarkBoard::Add(const QList<Landmark>& landmarks) {
  QSet<Landmark> known(myLandmarks.begin(), myLandmarks.end());
  QList<Landmark> all = myLandmarks;
  for (const Landmark& landmark : landmarks) {
    const qsizetype before = known.size();
    known.insert(landmark);
    if (known.size() > before) all.append(landmark);
  }
  if (all.size() > Landmark::kMaxCount) return std::nullopt;
  const qsizetype added = all.size() - myLandmarks.size();
  myLandmarks = std::move(all);
  if (added > 0) Store();
  return added;
}

void LandmarkBoard::Replace(const Landmark& old, const Landmark& now) {
  const qsizetype index = myLandmarks.indexOf(old);
  if (index < 0) return;
  myLandmarks[index] = now;
  Store();
}

void LandmarkBoard::Remove(const Landmark& landmark) {
  if (myLandmarks.removeOne(landmark)) Store();
}

void LandmarkBoard::Store() {
  mySettings.SetLandmarks(myLandmarks);
  Changed();
}

}  // namespace corvane::map
