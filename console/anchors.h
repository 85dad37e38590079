#pragma once

#include <vector>

#include <QFlags>
#include <QWidget>

namespace corvane {

// A pane that lays its controls out by position: each keeps its distance from the edges that it is
// anchored to while the pane is resized, and its size where only one of two opposite edges is.
// Borrows the controls, which are its children. A control that is squeezed stops at size 0.
class Anchors : public QWidget {
 public:
  enum Edge { Left = 1, Top = 2, Right = 4, Bottom = 8 };
  Q_DECLARE_FLAGS(Edges, Edge)

  // `designSize` is the size of the pane for which the controls' positions are given.
  Anchors(QSize designSize, QWidget* parent);

  // Adds the control, or gives it another place.
  void Add(QWidget* control, QRect position, Edges edges);

  QSize sizeHint() const override { return myDesignSize; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  struct Anchored {
    QWidget* control;
    QRect position;
    Edges edges;
  };

  void Place(const Anchored& anchored);

  QSize myDesignSize;
  std::vector<Anchored> myControls;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Anchors::Edges)

}  // namespace corvane
