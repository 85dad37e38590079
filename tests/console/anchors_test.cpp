#include "console/anchors.h"

#include <gtest/gtest.h>

using namespace corvane;

TEST(Anchors, ControlsKeepTheirDistanceFromTheirEdges) {
  using A = Anchors;
  const struct {
    A::Edges edges;
    QSize size;
    QRect position;
  } cases[] = {
      {A::Left | A::Top, {300, 350}, {10, 20, 30, 40}},
      {A::Right | A::Bottom, {300, 350}, {110, 170, 30, 40}},
      {A::Left | A::Top | A::Right, {300, 350}, {10, 20, 130, 40}},
      {A::Left | A::Top | A::Right | A::Bottom, {300, 350}, {10, 20, 130, 190}},
      {A::Left | A::Bottom, {150, 150}, {10, -30, 30, 40}},
      {A::Left | A::Top | A::Right | A::Bottom, {150, 150}, {10, 20, 0, 0}},
  };
  for (const auto& row : cases) {
    QWidget window;
    window.resize(200, 200);
    Anchors pane({200, 200}, &window);
    auto* control = new QWidget;
    pane.Add(control, {10, 20, 30, 40}, row.edges);
    EXPECT_EQ(control->geometry(), QRect(10, 20, 30, 40));
    window.show();
    pane.resize(row.size);
    EXPECT_EQ(control->geometry(), row.position);
  }
}
