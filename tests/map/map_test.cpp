#include "map/map_view.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

using client::Clock;
using std::chrono::seconds;

// The markers' colours as they are painted.
constexpr QRgb kAlive = 0xff1b7fd4;
constexpr QRgb kFighting = 0xffe86a0c;
constexpr QRgb kDead = 0xffb31e3c;
constexpr QRgb kStale = 0xff8a8f96;
constexpr QRgb kTrail = 0xff5b2a86;

class MapViewTest : public MapTest {
 protected:
  MapView& Map() { return *myWindow->map; }
  // The colour at the place, after the markers have arrived.
  QRgb ColourAt(QPointF place) {
    Map().Advance(Clock::now() + seconds(5));
    Map().Refresh();
    return Painted().pixel(OnMap(place));
  }
  // Whether a horizontal trail goes through the place. Its line is two pixels high and covers the
  // place's pixel or the one above.
  bool IsInATrail(QPointF place) {
    return ColourAt(place) == kTrail || Painted().pixel(OnMap(place) - QPoint(0, 1)) == kTrail;
  }
  QPointF Middle() { return Map().mapToScene(Map().viewport()->rect().center()); }
  double Scale() { return Map().transform().m11(); }
  void TurnWheel(QPoint at) {
    QWheelEvent wheel(at, Map().viewport()->mapToGlobal(at), {}, {0, 120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(Map().viewport(), &wheel);
  }
  void Drag(QPoint from, QPoint to, Qt::MouseButton button = Qt::LeftButton,
            Qt::KeyboardModifiers keys = {}) {
    QTest::mousePress(Map().viewport(), button, keys, from);
    QTest::mouseMove(Map().viewport(), to);
    QTest::mouseRelease(Map().viewport(), button, keys, to);
  }
};

TEST_F(MapViewTest, AMemberAppearsMovesChangesStateAndLeaves) {
  const auto bob = Member("Bob", "-100,-200,0,50,0,0");
  const auto cy = Member("Cy", "-100,-200,1,5,0,1");
  ASSERT_TRUE(Knows("Cy", {-100, -200, 1, 5, false, true}));
  Map().ShowAll();
  EXPECT_EQ(ColourAt({-100, -200}), kAlive);
  QTest::mouseClick(Map().viewport(), Qt::LeftButton, {}, OnMap({-100, -200}));
  EXPECT_EQ(myWindow->Shown().selected, Find("Bob")) << "the other is on another facet";
  bob->Send(4, "-120,-210,0,40,1,0");
  ASSERT_TRUE(Knows("Bob", {-120, -210, 0, 40, true, false}));
  EXPECT_EQ(ColourAt({-120, -210}), kFighting);
  EXPECT_EQ(myWindow->Board().Find(Find("Bob"))->label->text(), "Bob 40");
  EXPECT_NE(ColourAt({-100, -200}), kAlive);
  bob->Send(4, "-121,-210,0,0,1,1");
  ASSERT_TRUE(Knows("Bob", {-121, -210, 0, 0, true, true}));
  EXPECT_EQ(ColourAt({-121, -210}), kDead);
  EXPECT_TRUE(RowsAre({"Bob|-121|-210|0|0|Dead", "Cy|-100|-200|1|5|Dead"}));
  bob->Close();
  ASSERT_TRUE(PumpUntil([&] { return Find("Bob") == nullptr; }));
  EXPECT_NE(ColourAt({-121, -210}), kDead);
  EXPECT_TRUE(RowsAre({"Cy|-100|-200|1|5|Dead"}));
}

TEST_F(MapViewTest, AMemberWithoutNewsTurnsGreyAndStays) {
  const auto bob = Member("Bob", "100,200,0,50,0,0");
  Map().ShowAll();
  ASSERT_EQ(ColourAt({100, 200}), kAlive);
  Map().Advance(Clock::now() + seconds(61));
  EXPECT_EQ(Painted().pixel(OnMap({100, 200})), kStale);
  EXPECT_TRUE(RowsAre({"Bob|100|200|0|50|Alive"}));
}

TEST_F(MapViewTest, IsPannedAndZoomedByMouseAndKeys) {
  const auto bob = Member("Bob", "1000,1000,0,50,0,0");
  const auto cy = Member("Cy", "3000,2000,0,50,0,0");
  const auto shows = [&](QPointF place) { return Map().viewport()->rect().contains(OnMap(place)); };
  QTest::keyClick(&Map(), Qt::Key_Home);
  EXPECT_TRUE(shows({1000, 1000}));
  EXPECT_TRUE(shows({3000, 2000}));

  // The wheel keeps the place under the pointer.
  const double scale = Scale();
  const QPoint pointer = OnMap({1000, 1000});
  TurnWheel(pointer);
  EXPECT_GT(Scale(), scale * 1.2);
  EXPECT_LE((OnMap({1000, 1000}) - pointer).manhattanLength(), 2);
  QTest::keyClick(&Map(), Qt::Key_Minus);
  EXPECT_NEAR(Scale(), scale, scale * 0.01);
  QTest::keyClick(&Map(), Qt::Key_Plus);
  EXPECT_GT(Scale(), scale * 1.2);
  QTest::mouseDClick(Map().viewport(), Qt::LeftButton, {}, pointer);
  EXPECT_GT(Scale(), scale * 2.2);

  const QPointF before = Middle();
  QTest::keyClick(&Map(), Qt::Key_Right);
  EXPECT_GT(Middle().x(), before.x());
  const QPointF held = Map().mapToScene(200, 200);
  Drag({200, 200}, {260, 240});
  EXPECT_LE((OnMap(held) - QPoint(260, 240)).manhattanLength(), 2);
  Drag({200, 200}, {100, 100}, Qt::RightButton);
  EXPECT_LE((OnMap(held) - QPoint(260, 240)).manhattanLength(), 2);

  // Coordinates are rounded down, and empty without a pointer.
  Map().PointerMoved(QPointF(-0.5, 7.5));
  EXPECT_EQ(myWindow->stsLine->lblPlace->text(), "-1, 7");
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&Map(), &leave);
  EXPECT_EQ(myWindow->stsLine->lblPlace->text(), "");

  for (int step = 0; step < 100; ++step)
    Map().ZoomIn();
  EXPECT_LE(Scale(), 32.1);
  for (int step = 0; step < 100; ++step)
    Map().ZoomOut();
  EXPECT_TRUE(shows({1000, 1000}));
  EXPECT_GT((OnMap({1000, 1000}) - OnMap({3000, 2000})).manhattanLength(), 40);

  // A box drawn with Shift fills the window; a tiny one is ignored.
  Map().ShowAll();
  Drag({100, 100}, {130, 101}, Qt::LeftButton, Qt::ShiftModifier);
  EXPECT_NEAR(Scale(), scale, scale * 0.01);
  const QPoint corner = OnMap({2000, 1400});
  const QPoint opposite = OnMap({2400, 1700});
  Drag(corner, opposite, Qt::LeftButton, Qt::ShiftModifier);
  EXPECT_NEAR(Middle().x(), 2200, 20);
  EXPECT_NEAR(Middle().y(), 1550, 20);
  EXPECT_FALSE(shows({3000, 2000}));

  // Sent to the window: for a widget, Qt moves the system's pointer, which may be there already.
  QTest::mouseMove(myWindow->windowHandle(), Map().viewport()->mapTo(&*myWindow, QPoint(50, 60)));
  // Also when the map moves below the pointer.
  for (const Qt::Key key : {Qt::Key_unknown, Qt::Key_Right}) {
    if (key != Qt::Key_unknown) QTest::keyClick(&Map(), key);
    const QPointF place = Map().mapToScene(50, 60);
    EXPECT_EQ(myWindow->stsLine->lblPlace->text(), QStringLiteral("%1, %2")
                                                       .arg(std::floor(place.x()), 0, 'f', 0)
                                                       .arg(std::floor(place.y()), 0, 'f', 0));
  }
}

TEST_F(MapViewTest, FollowsAMemberToAnotherFacetAndAfterItsReturn) {
  auto bob = Member("Bob", "1000,1000,0,50,0,0");
  Map().ShowAll();
  QTest::mouseClick(Map().viewport(), Qt::LeftButton, {}, OnMap({1000, 1000}));
  ASSERT_EQ(myWindow->Shown().selected, Find("Bob"));
  EXPECT_TRUE(myWindow->pnlMembers->lstMembers->currentIndex().isValid());
  QTest::keyClick(&Map(), Qt::Key_F);
  const auto isInTheMiddle = [&](QPointF place) {
    return PumpUntil([&] { return (Middle() - place).manhattanLength() < 5; });
  };
  bob->Send(4, "1100,1040,0,50,0,0");
  EXPECT_TRUE(isInTheMiddle({1100, 1040}));
  bob->Send(4, "500,600,3,50,0,0");
  EXPECT_TRUE(isInTheMiddle({500, 600}));
  EXPECT_EQ(myWindow->Facet(), 3);
  EXPECT_EQ(myWindow->cmbFacet->currentText(), "3");
  bob.reset();
  ASSERT_TRUE(PumpUntil([&] { return Find("Bob") == nullptr; }));
  EXPECT_EQ(myWindow->Shown().selected, nullptr);
  EXPECT_EQ(myWindow->Shown().followed, nullptr);
  bob = Member("BOB", "700,800,0,50,0,0");
  EXPECT_TRUE(isInTheMiddle({700, 800}));

  QTest::keyClick(&Map(), Qt::Key_Escape);
  bob->Send(4, "900,900,0,50,0,0");
  ASSERT_TRUE(Knows("Bob", {900, 900, 0, 50, false, false}));
  Map().Advance(Clock::now() + seconds(5));
  EXPECT_LT((Middle() - QPointF(700, 800)).manhattanLength(), 5);

  const std::function<void()> movements[] = {
      [&] {
        TurnWheel({50, 50});
      },
      [&] {
        Drag({50, 50}, {80, 90});
      },
      [&] { QTest::keyClick(&Map(), Qt::Key_Left); },
      [&] { QTest::keyClick(&Map(), Qt::Key_Home); },
      [&] { QTest::keyClick(&Map(), Qt::Key_F); },
  };
  Map().CentreOn(*Find("Bob"));
  QTest::mouseClick(Map().viewport(), Qt::LeftButton, {}, OnMap({900, 900}));
  for (const auto& move : movements) {
    QTest::keyClick(&Map(), Qt::Key_F);
    ASSERT_EQ(myWindow->Shown().followed, Find("Bob"));
    move();
    EXPECT_FALSE(Map().IsFollowing());
    EXPECT_EQ(myWindow->Shown().followed, nullptr);
  }
  QTest::mouseClick(Map().viewport(), Qt::LeftButton, {}, QPoint(5, 5));
  EXPECT_EQ(myWindow->Shown().selected, nullptr);
}

TEST_F(MapViewTest, LabelsDoNotOverlapAndTheSelectedOneIsShown) {
  constexpr int kMembers = 10;
  for (int i = 0; i < kMembers; ++i) {
    myWindow->Wire().Others().TakeRelay({"member " + std::to_string(i), {7, 7, 0, 50}},
                                        Clock::now());
  }
  Map().ShowAll();
  Map().Advance(Clock::now());
  QTest::mouseClick(Map().viewport(), Qt::LeftButton, {}, OnMap({7, 7}));
  Painted();
  const Marker* const selected = myWindow->Board().Find(myWindow->Shown().selected);
  ASSERT_NE(selected, nullptr);
  EXPECT_EQ(selected, myWindow->Board().All().back()) << "the topmost";
  EXPECT_TRUE(selected->showsLabel);
  std::vector<QRect> names;
  for (const Marker* marker : myWindow->Board().All()) {
    if (!marker->showsLabel) continue;
    const QRect name = marker->labelPlace;
    for (const QRect& other : names)
      EXPECT_FALSE(name.intersects(other));
    names.push_back(name);
  }
  EXPECT_GT(names.size(), 1U);
}

TEST_F(MapViewTest, DrawsATrailForTheChosenMember) {
  const auto bob = Member("Bob", "100,100,0,50,0,0");
  const auto cy = Member("Cy", "100,300,0,50,0,0");
  Map().ShowAll();
  QTest::mouseClick(Map().viewport(), Qt::LeftButton, {}, OnMap({100, 100}));
  QMenu* const menu = myWindow->actions->mnuMember;
  menu->popup(myWindow->pos());
  QTest::keyClick(menu, Qt::Key_T);
  EXPECT_FALSE(menu->isVisible())
      << "a letter chooses its item, even if it is a shortcut of the map";
  bob->Send(4, "200,100,0,50,0,0");
  cy->Send(4, "200,300,0,50,0,0");
  ASSERT_TRUE(Knows("Bob", {200, 100, 0, 50, false, false}));
  ASSERT_TRUE(Knows("Cy", {200, 300, 0, 50, false, false}));
  EXPECT_TRUE(IsInATrail({150, 100}));
  EXPECT_FALSE(IsInATrail({150, 300}));
}

}  // namespace
}  // namespace corvane::map
