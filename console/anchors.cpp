#include "console/anchors.h"

#include <QResizeEvent>

namespace corvane {
namespace {

struct Span {
  int start;
  int length;
};

// One dimension of a control; `growth` is how much the pane has grown since its design size.
Span Stretched(Span span, bool keepsNear, bool keepsFar, int growth) {
  if (keepsNear && keepsFar) return {span.start, span.length + growth};
  if (keepsFar) return {span.start + growth, span.length};
  return span;
}

}  // namespace

Anchors::Anchors(QSize designSize, QWidget* parent) : QWidget(parent), myDesignSize(designSize) {
  resize(designSize);
}

void Anchors::Add(QWidget* control, QRect position, Edges edges) {
  std::erase_if(myControls, [control](const Anchored& old) { return old.control == control; });
  if (control->parentWidget() != this) control->setParent(this);
  myControls.push_back({control, position, edges});
  Place(myControls.back());
}

void Anchors::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  for (const Anchored& anchored : myControls)
    Place(anchored);
}

void Anchors::Place(const Anchored& anchored) {
  const QRect& design = anchored.position;
  const Edges edges = anchored.edges;
  const QSize growth = size() - myDesignSize;
  const Span across = Stretched({design.x(), design.width()}, edges.testFlag(Left),
                                edges.testFlag(Right), growth.width());
  const Span down = Stretched({design.y(), design.height()}, edges.testFlag(Top),
                              edges.testFlag(Bottom), growth.height());
  anchored.control->setGeometry(across.start, down.start, across.length, down.length);
}

}  // namespace corvane
