#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

class OwnPositionTest : public MapTest {
 protected:
  OwnPositionTest() { bob->Drain(); }

  std::unique_ptr<TestClient> bob = Member("Bob", "-1000,-1000,2,50,0,0");
};

TEST_F(OwnPositionTest, IsSentOnlyIfWanted) {
  MapView& map = *myWindow->map;
  myWindow->ShowFacet(2);
  map.ShowAll();
  QTest::mouseClick(map.viewport(), Qt::LeftButton, {}, QPoint(30, 40));
  EXPECT_TRUE(bob->HearsNothing());

  Click(myWindow->barOwn->chkSend);
  EXPECT_TRUE(myWindow->actions->actSend->isChecked());
  QTest::mouseClick(map.viewport(), Qt::LeftButton, {}, QPoint(30, 40));
  const QPoint place = map.mapToScene(30, 40).toPoint();
  const std::string at = std::to_string(place.x()) + "," + std::to_string(place.y());
  EXPECT_EQ(bob->Receive(), (WireMessage{5, "Ann|" + at + ",2,100,0,0"}));
  myWindow->barOwn->spnHp->setValue(70);
  EXPECT_EQ(bob->Receive(), (WireMessage{5, "Ann|" + at + ",2,70,0,0"}));
  // A change of flags alone is not relayed; the next step carries it.
  Click(myWindow->barOwn->chkBattle);
  map.setFocus();
  QTest::keyClick(&map, Qt::Key_Up, Qt::ControlModifier);  // pans only
  QTest::keyClick(&map, Qt::Key_Right);
  const auto heard = bob->Receive();
  ASSERT_TRUE(heard);
  EXPECT_EQ(heard->payload, "Ann|" + std::to_string(place.x() + OwnPosition::kStride) + "," +
                                std::to_string(place.y()) + ",2,70,1,0");
  const auto isShown = [&] {
    const client::Report& own = *myWindow->Shown().own;
    return Painted().pixel(OnMap(QPointF(own.x, own.y))) == 0xffe86a0c;  // fighting
  };
  EXPECT_TRUE(isShown());
  myWindow->ShowFacet(0);
  EXPECT_FALSE(isShown());
  Click(myWindow->barOwn->chkSend);
  QTest::keyClick(&map, Qt::Key_Right);
  EXPECT_TRUE(bob->HearsNothing());
  EXPECT_FALSE(myWindow->Shown().own);
}

TEST_F(OwnPositionTest, IsSentFiveTimesASecondAtMost) {
  MapView& map = *myWindow->map;
  Click(myWindow->barOwn->chkSend);
  map.setFocus();
  const auto begin = std::chrono::steady_clock::now();
  std::size_t heard = 0;
  std::string last;
  for (int step = 0; step < 40; ++step) {
    QTest::keyClick(&map, Qt::Key_Down);
    PumpFor(std::chrono::milliseconds(20));
  }
  const auto end = std::to_string(40 * OwnPosition::kStride);
  while (!last.starts_with("Ann|0," + end + ",")) {
    const auto message = bob->Receive();
    ASSERT_TRUE(message) << "the last position never came";
    last = message->payload;
    ++heard;
  }
  const auto pauses = (std::chrono::steady_clock::now() - begin) / OwnPosition::kPause;
  EXPECT_GT(heard, 1U);
  EXPECT_LE(heard, static_cast<std::size_t>(pauses) + 1);
}

}  // namespace
}  // namespace corvane::map
