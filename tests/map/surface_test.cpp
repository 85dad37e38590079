#include <algorithm>

#include <QApplication>
#include <QClipboard>
#include <QHelpEvent>
#include <QMenu>
#include <QToolButton>
#include <QToolTip>

#include "map/coordinates.h"
#include "map/crowds.h"
#include "map/text_dialog.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

using client::Clock;

TEST(Coordinates, AreReadInAnyUsualWriting) {
  const std::pair<const char*, std::optional<Coordinates>> cases[] = {
      {"1200, 845", {{{1200, 845}}}},
      {" (1200 -845) ", {{{1200, -845}}}},
      {"1200/845/2", {{{1200, 845}, 2}}},
      {"x: 1200.5; Y=845.9, facet 2", {{{1200, 845}, 2}}},
      {"\xE2\x88\x92"
       "7,8,-1",
       {{{-7, 8}, -1}}},
      {"", {}},
      {"1200", {}},
      {"1200 845 2 9", {}},
      {"1200, north", {}},
      {"99999999, 1", {}},
      {"1, 99999999999999999999", {}},
  };
  for (const auto& [text, place] : cases)
    EXPECT_EQ(ParseCoordinates(QString::fromUtf8(text)), place) << text;
}

TEST(Crowds, AreMoreThanTenInOnePlace) {
  // The corner of four squares, and places at and beyond the edges of a window.
  for (const QPointF& middle : {QPointF(5 * kCrowdRadius, 5 * kCrowdRadius), QPointF(299, 199),
                                QPointF(-9, -9), QPointF(312, 50)}) {
    std::vector<QPointF> points{middle + QPointF(kCrowdRadius + 4, 0)};
    for (std::size_t i = 1; i < kMinCrowd; ++i)
      points.push_back(middle + QPointF(i % 2 == 0 ? 3 : -3, i % 3 == 0 ? 3 : -3));
    EXPECT_TRUE(FindCrowds(points).empty());
    points.push_back(middle);
    const auto crowds = FindCrowds(points);
    ASSERT_EQ(crowds.size(), 1U);
    EXPECT_EQ(crowds.front().size(), kMinCrowd);
  }
}

class SurfaceTest : public WindowTest {
 protected:
  MapView& Map() { return *myWindow->map; }
  const MarkersItem& Markers() { return Map().Scene()->Markers(); }
  void Relay(const std::string& name, const client::Report& report) {
    myWindow->Wire().Others().TakeRelay({name, report}, Clock::now());
  }
  const client::Member* Find(const std::string& name) {
    return myWindow->Wire().Others().Find(name);
  }
  void Settle() { Map().Advance(Clock::now() + std::chrono::seconds(5)); }
  void RightClick(QPoint at) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, Map().viewport()->mapToGlobal(at));
    QApplication::sendEvent(Map().viewport(), &event);
  }
  static QMenu* OpenMenu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
};

TEST_F(SurfaceTest, LabelsAreNeverCutAndOverlapNothing) {
  for (int i = 0; i < 300; ++i)
    Relay("member " + std::to_string(i), {i * 7919 % 1000, i * 104'729 % 700, 0, 50});
  Relay("a corner has room for a name, too", {1050, 750, 0, 50});
  Map().ShowAll();
  Map().MemberClicked(*Find("a corner has room for a name, too"));
  for (int step = 0; step < 3; ++step) {
    for (int i = 0; i < 300; i += 3)
      Relay("member " + std::to_string(i),
            {(i * 7919 + step * 9) % 1000, i * 104'729 % 700, 0, 50});
    Settle();
    Painted();
    std::vector<QRect> taken{Map().findChild<QWidget*>("MapButtons")->geometry(),
                             Map().findChild<QWidget*>("ScaleBar")->geometry()};
    for (const Marker* marker : myWindow->Board().All()) {
      const QPoint at = OnMap(marker->place);
      if (!marker->showsLabel || !Map().viewport()->rect().contains(at)) continue;
      const QRect name = marker->labelPlace.translated(at);
      EXPECT_TRUE(Map().viewport()->rect().contains(name));
      for (const QRect& other : taken)
        EXPECT_FALSE(name.intersects(other));
      taken.push_back(name);
    }
    EXPECT_GT(taken.size(), 20U);
    const Marker* selected = myWindow->Board().Find(myWindow->Shown().selected);
    EXPECT_TRUE(selected->showsLabel);
    Map().Scene()->Markers().PlaceLabels();
    Map().CentreOn(*selected->member);
  }
}

TEST_F(SurfaceTest, NewcomersHaveLabelsSoonThoughNobodyMoves) {
  Relay("a", {0, 0, 0, 50});
  Relay("z", {2000, 2000, 0, 50});
  Map().ShowAll();
  // So that none of its frames is left.
  for (std::size_t i = 0; i < MarkersItem::kTurns; ++i)
    Painted();
  for (const std::string name : {"b", "c", "d", "e"})
    Relay(name, {(name[0] - 'a') * 400, 1000, 0, 50});
  EXPECT_TRUE(
      PumpUntil([&] { return std::ranges::all_of(myWindow->Board().All(), &Marker::showsLabel); }));
}

TEST_F(SurfaceTest, ACrowdZoomsInUntilItSeparatesOrListsItsMembers) {
  for (int i = 0; i < 20; ++i)
    Relay("camper " + std::to_string(i), {500, 500, 0, 50});
  for (int i = 0; i < 20; ++i)
    Relay("guard " + std::to_string(i), {4000 + 6 * i, 4000, 0, 50});
  Map().ShowAll();
  const auto click = [&](QPointF place) {
    QTest::mouseClick(Map().viewport(), Qt::LeftButton, {}, OnMap(place));
  };
  EXPECT_EQ(Markers().CrowdAt(OnMap({500, 500}), Map()).size(), 20U);
  EXPECT_EQ(Markers().MemberAt(OnMap({500, 500}), Map()), nullptr);
  EXPECT_TRUE(Markers().TipAt(OnMap({500, 500}), Map()).contains("camper 19"));
  EXPECT_EQ(QColor(Painted().pixel(OnMap({500, 500}) + QPoint(0, 10))), QColor(0x1d, 0x3a, 0x5c));
  click({4057, 4000});
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(Markers().MemberAt(OnMap(QPointF(4000 + 6 * i, 4000)), Map()),
              Find("guard " + std::to_string(i)));
  EXPECT_EQ(OpenMenu(), nullptr);

  Map().ShowAll();
  click({500, 500});
  ASSERT_NE(OpenMenu(), nullptr);
  ASSERT_EQ(OpenMenu()->actions().size(), 20);
  EXPECT_EQ(OpenMenu()->actions().front()->text(), "camper 0");
  OpenMenu()->actions().front()->trigger();
  OpenMenu()->close();
  EXPECT_EQ(myWindow->Shown().selected, Find("camper 0"));
  EXPECT_EQ(Markers().MemberAt(OnMap({500, 500}), Map()), Find("camper 0")) << "it stands out";
  EXPECT_EQ(Markers().CrowdAt(OnMap({500, 500}), Map()).size(), 19U);
}

TEST_F(SurfaceTest, AMarkerAndTheGroundHaveTipsAndMenus) {
  Relay("Bob <b>", {1000, 800, 0, 80});
  Relay("Bob <b>", {1000, 800, 0, 20, true});
  Relay("Cy", {2000, 1200, 0, 50});
  Map().ShowAll();
  Settle();
  const QPoint bob = OnMap({1000, 800});
  EXPECT_TRUE(Markers()
                  .TipAt(bob, Map())
                  .startsWith("Bob <b>\nHit points: 20, highest seen: 80\nIn battle\n1000, 800, "
                              "facet 0\nLast news: "));
  EXPECT_EQ(Markers().TipAt({5, 5}, Map()), "");
  QHelpEvent help(QEvent::ToolTip, bob, Map().viewport()->mapToGlobal(bob));
  QApplication::sendEvent(Map().viewport(), &help);
  EXPECT_TRUE(QToolTip::text().contains("Bob &lt;b&gt;"));
  // A quarter of the bar below the marker is filled.
  const QImage painted = Painted();
  EXPECT_NE(painted.pixel(bob + QPoint(-6, 12)), painted.pixel(bob + QPoint(0, 12)));
  EXPECT_EQ(painted.pixel(bob + QPoint(0, 12)), painted.pixel(bob + QPoint(8, 12)));

  RightClick(bob);
  ASSERT_EQ(OpenMenu(), myWindow->actions->mnuMember);
  EXPECT_EQ(myWindow->Shown().selected, Find("Bob <b>"));
  myWindow->actions->actCopy->trigger();
  EXPECT_EQ(QApplication::clipboard()->text(), "1000, 800, 0");
  OpenMenu()->close();
  const QPoint ground = bob + QPoint(60, 40);
  RightClick(ground);
  ASSERT_EQ(OpenMenu(), myWindow->actions->mnuPlace);
  myWindow->actions->actCopyPlace->trigger();
  OpenMenu()->close();
  const auto copied = ParseCoordinates(QApplication::clipboard()->text());
  ASSERT_TRUE(copied);
  EXPECT_LE((OnMap(copied->at) - ground).manhattanLength(), 4);
  Map().setFocus();
  QTest::keyClick(&Map(), Qt::Key_F10, Qt::ShiftModifier);
  ASSERT_EQ(OpenMenu(), myWindow->actions->mnuMember) << "of the selected marker";
  OpenMenu()->close();
}

TEST_F(SurfaceTest, GoesToTypedCoordinates) {
  Map().setFocus();
  QTest::keyClick(&Map(), Qt::Key_G, Qt::ControlModifier);
  auto* dialog = Opened<TextDialog>("TextDialog");
  Type(dialog->txtText, "somewhere");
  Click(dialog->btnOK);
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_TRUE(dialog->lblHint->text().startsWith("\"somewhere\" is no place"));
  Type(dialog->txtText, "1234 567 3");
  QTest::keyClick(dialog->txtText, Qt::Key_Return);
  EXPECT_EQ(myWindow->Facet(), 3);
  EXPECT_LE((OnMap({1234, 567}) - Map().viewport()->rect().center()).manhattanLength(), 2);
}

TEST_F(SurfaceTest, MarksTellSelectedFollowedAndOwnApartAndFocusIsSeen) {
  for (int i = 0; i < 4; ++i)
    Relay(std::to_string(i), {i * 100, 0, 0, 50});
  Map().ShowAll();
  Settle();
  // The colour so far up and left of a place.
  const auto colour = [&](int x, int left, int up) {
    return QColor(Painted().pixel(OnMap(QPointF(x, 0)) - QPoint(left, up)));
  };
  const auto hasRing = [&](int x) {
    return colour(x, 0, 11).red() > 200 && colour(x, 0, 11).blue() < 120;
  };
  const auto hasCorners = [&](int x) { return colour(x, 15, 15) == QColor(0x5a, 0xf0, 0xff); };
  Map().MemberClicked(*Find("1"));
  Map().Follow(*Find("2"));
  for (const int x : {0, 100, 200}) {
    EXPECT_EQ(hasRing(x), x == 100);
    EXPECT_EQ(hasCorners(x), x == 200);
  }
  for (const char* name : {"1", "2"})
    EXPECT_GT(myWindow->Board().Find(Find(name))->labelPlace.left(), 0) << "there is room";
  EXPECT_FALSE(myWindow->actions->actShowMe->isEnabled());
  Click(myWindow->barOwn->chkSend);
  Map().PlaceClicked({5000, 0});
  auto* me = myWindow->findChild<QToolButton*>("btnShowMe");
  EXPECT_EQ(me->accessibleName(), "Me");
  Click(me);
  EXPECT_LE((OnMap({5000, 0}) - Map().viewport()->rect().center()).manhattanLength(), 2);
  EXPECT_GT(colour(5000, 0, 13).green(), colour(5000, 0, 13).red() + 40) << "the halo";

  Map().setFocus();
  const QRgb focused = Painted().pixel(1, 1);
  myWindow->pnlMembers->lstMembers->setFocus();
  EXPECT_NE(Painted().pixel(1, 1), focused);
}

}  // namespace
}  // namespace corvane::map
