#pragma once

#include <QAction>
#include <QList>
#include <QToolButton>
#include <QWidget>

namespace corvane::map {

// A button on the map: an action with a drawing of our own, in the palette's colours.
class MapButton : public QToolButton {
 public:
  enum class Drawing { Plus, Minus, People, Target };

  MapButton(Drawing drawing, QAction& action, QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Drawing myDrawing;
};

// The column of buttons at the map's lower right corner. Grows with the font.
class MapButtons : public QWidget {
 public:
  // Borrows the actions.
  MapButtons(QAction& zoomIn, QAction& zoomOut, QAction& everybody, QAction& me, QWidget* parent);
};

}  // namespace corvane::map
