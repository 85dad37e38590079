#pragma once

#include <set>

#include <QComboBox>
#include <QList>

#include "map/marker_board.h"

namespace corvane::map {

// Chooses a facet: those with members or a picture, facet 0, and the one that is shown.
class FacetBox : public QComboBox {
 public:
  using QComboBox::QComboBox;

  void List(const MarkerBoard& board, const QList<int>& pictured, int shown);

 private:
  std::set<int> myFacets;
};

}  // namespace corvane::map
