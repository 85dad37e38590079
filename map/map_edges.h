#pragma once

#include <QCoreApplication>
#include <QGraphicsView>
#include <QWidget>

namespace corvane::map {

// The coordinates along the left or the lower edge of a map, at the lines of its grid. Grows with
// the font. Borrows the view.
class MapRuler : public QWidget {
 public:
  // `orientation` is the direction of the edge.
  MapRuler(Qt::Orientation orientation, QGraphicsView& view);

  int Thickness() const { return fontMetrics().height() + 4; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QGraphicsView& myView;
  Qt::Orientation myOrientation;
};

// A bar with its length in map units. Borrows the view.
class ScaleBar : public QWidget {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::ScaleBar)

 public:
  // A child of the view's viewport.
  explicit ScaleBar(QGraphicsView& view);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  double Step() const;
  QString Text() const;

  QGraphicsView& myView;
};

// What stands along the edges of a map: coordinates, the scale, buttons. Hides what has no room.
class MapEdges {
 public:
  // Borrows the view, which owns the widgets.
  explicit MapEdges(QGraphicsView& view);

  // Of the margin that the view leaves on its left and lower edge, in pixels.
  int Thickness() const { return myLower->Thickness(); }
  // Keeps the widget, a child of the viewport, in the lower right corner.
  void SetButtons(QWidget& buttons);
  // Called when the viewport or the font has changed.
  void LayOut() const;
  // Called when the view shows another part.
  void Update() const;

 private:
  // Where a widget of that size is in a lower corner.
  QPoint CornerOf(QSize size, Qt::Edge side) const;

  QGraphicsView& myView;
  MapRuler* myLeft;
  MapRuler* myLower;
  ScaleBar* myScaleBar;
  QWidget* myButtons = nullptr;
};

}  // namespace corvane::map
