#pragma once

#include <vector>

#include <QGraphicsItem>
#include <QStaticText>

#include "map/landmark_art.h"
#include "map/landmark_board.h"
#include "map/map_scene.h"

namespace corvane::map {

// Draws a facet's landmarks: their icons below the members, their names where members and their
// labels leave room. Icons and names keep their size at all scales.
class LandmarksItem : public QGraphicsItem {
 public:
  // Borrows both.
  LandmarksItem(const LandmarkBoard& board, MapScene& scene);

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
    QRect namePlace{};  // relative to the landmark; without a size until it is laid out
  };
  struct Visible {
    Mark* mark;
    QPointF at;  // in the window
  };

  void DrawNames(QPainter& painter, LabelPlacement& placement);

  const LandmarkBoard& myBoard;
  MapScene& myScene;
  LandmarkArt myArt;
  std::vector<Mark> myMarks;
  std::vector<Visible> myVisible;  // as of the last paint
  QTransform myToView;             // of the last paint
  QFont myFont;
};

}  // namespace corvane::map
