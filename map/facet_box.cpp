#include "map/facet_box.h"

#include <utility>

namespace corvane::map {
namespace {

// More than any map has. A server may report any number.
constexpr std::size_t kMaxFacets = 200;

}  // namespace

void FacetBox::List(const MarkerBoard& board, const QList<int>& pictured, int shown) {
  std::set<int> facets{0, shown};
  facets.insert(pictured.begin(), pictured.end());
  for (const Marker* marker : board.All()) {
    if (facets.size() < kMaxFacets) facets.insert(marker->facet);
  }
  if (facets != myFacets) {
    clear();
    for (const int facet : facets)
      addItem(QString::number(facet), facet);
    myFacets = std::move(facets);
  }
  setCurrentIndex(findData(shown));
}

}  // namespace corvane::map
