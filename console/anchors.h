#pragma once

#include <vector>

#include <QFlags>
#include <QWidget>

namespace corvane {

// A pane that lays out its controls by anchors. When the pane is resized, a control keeps its
// distance from each edge that it is anchored to, and stretches between two opposite edges. A
// control never gets a negative size. The controls are the pane's children.
class Anchors : public QWidget {
 public:
  enum Edge { Left = 1, Top = 2, Right = 4, Bottom = 8 };
  Q_DECLARE_FLAGS(Edges, Edge)

  // The controls' positions are given for a pane of `designSize`.
  Anchors(QSize designSize, QWidget* parent);

  // Adds the control, or changes its place.
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
