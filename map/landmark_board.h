#pragma once

#include <optional>

#include <QList>

#include "framework/signal.h"
#include "map/places/landmark.h"
#include "map/settings.h"

namespace corvane::map {

// The landmarks of the current place, the oldest first. Stores each change in the settings, which
// it borrows.
class LandmarkBoard {
 public:
  explicit LandmarkBoard(Settings& settings);

  // A landmark was added, changed or removed, or the place is another one.
  Signal<> Changed;

  const QList<Landmark>& All() const { return myLandmarks; }

  // Adds those that are not there yet and returns their number. None, and no change, if there would
  // be more than Landmark::kMaxCount.
  std::optional<qsizetype> Add(const QList<Landmark>& landmarks);
  // These do nothing if there is no such landmark any more.
  void Replace(const Landmark& old, const Landmark& now);
  void Remove(const Landmark& landmark);

 private:
  void Store();

  Settings& mySettings;
  QList<Landmark> myLandmarks;
  SignalConnection myPlaceChanged;
};

}  // namespace corvane::map
