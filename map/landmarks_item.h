#pragma once

#include <vector>

#include <QGraphicsItem>
#include <QStaticText>

#include "map/label_placement.h"
#include "map/landmark_art.h"
#include "map/landmark_board.h"

namespace corvane::map {

// Draws a facet's landmarks, below the members. Icons and names keep their size at all scales.
class LandmarksItem : public QGraphicsItem {
 public:
  // Borrows the board.
  LandmarksItem(const LandmarkBoard& board, int facet);

  QRectF boundingRect() const override;
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

  // The topmost landmark whose icon is at the point; null if there is none. `toView` maps the map
  // into the window.
  const Landmark* LandmarkAt(QPoint inView, const QTransform& toView) const;

  // Reads the board again.
  void Reload();

 private:
  struct Mark {
    const Landmark* landmark;  // of the board, until it changes
    std::size_t icon;
    QStaticText name;
    QPoint namePlace{};  // its top left corner, relative to the landmark
    bool showsName = false;
  };

  void PlaceNames(const std::vector<Mark*>& visible, const QTransform& toView, const QRect& window);

  const LandmarkBoard& myBoard;
  int myFacet;
  LandmarkArt myArt;
  std::vector<Mark> myMarks;
  QTransform myNamesFor;  // the view whose names are placed
  QRect myWindow;
  QFont myFont;
};

}  // namespace corvane::map
