#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "map/label_placement.h"
#include "map/marker_board.h"
#include "map/members_model.h"
#include "map/motion.h"
#include "map/settings.h"

namespace corvane::map {
namespace {

using client::Clock;
using client::Report;
using std::chrono::milliseconds;

TEST(Motion, MovesEvenlyToTheReportedPlaceAndJumpsFarAway) {
  const Clock::time_point start = Clock::now();
  Motion motion({0, 0});
  motion.GoTo({10, 0}, start);
  motion.JumpTo({10, 0});
  motion.GoTo({20, 0}, start + milliseconds(500));
  EXPECT_EQ(motion.At(start + milliseconds(500)), QPointF(10, 0));
  EXPECT_EQ(motion.At(start + milliseconds(750)), QPointF(15, 0))
      << "as long as the reports were apart";
  EXPECT_TRUE(motion.IsUnderway(start + milliseconds(999)));
  // A report on the way starts from the shown position.
  motion.GoTo({15, 8}, start + milliseconds(750));
  EXPECT_EQ(motion.At(start + milliseconds(750)), QPointF(15, 0));
  EXPECT_EQ(motion.At(start + milliseconds(5000)), QPointF(15, 8));
  motion.GoTo({5000, 8}, start + milliseconds(6000));
  EXPECT_EQ(motion.At(start + milliseconds(6000)), QPointF(5000, 8));
  motion.GoTo({5010, 8}, start + milliseconds(6500));
  EXPECT_EQ(motion.At(start + milliseconds(6750)), QPointF(5005, 8))
      << "the jump counts as a report";
}

class BoardTest : public testing::Test {
 protected:
  void Relay(const std::string& name, const Report& report) {
    members.TakeRelay({name, report}, Clock::now());
  }
  const client::Member& Named(const std::string& name) { return *members.Find(name); }

  client::Members members;
  MarkerBoard board{members};
};

TEST_F(BoardTest, ReportsChangesOfTheAskedFacetOnly) {
  Relay("Ann", {-30'000'000, -5, 0});
  Relay("Bob", {10, 20, 1});
  EXPECT_EQ(board.Extent(0).center(), QPointF(-kMaxCoordinate, -5));
  board.Advance(Clock::now(), 0);
  Relay("Ann", {-30'000'000, 5, 0});
  Relay("Bob", {10, 30, 1});
  EXPECT_TRUE(board.Advance(Clock::now(), 0));
  EXPECT_FALSE(board.Advance(Clock::now(), 2));
  members.Remove("Ann");
  members.TakeListed({"Bob", {}}, Clock::now());
  EXPECT_EQ(board.Find(&Named("Bob")), nullptr);
  EXPECT_TRUE(board.All().empty());
  EXPECT_TRUE(board.Advance(Clock::now(), 2));
}

TEST_F(BoardTest, ATrailIsBoundedAndStaysOnItsFacet) {
  Relay("Bob", {0, 0, 1});
  board.SetTrail(Named("Bob"), true);
  const auto& trail = board.Find(&Named("Bob"))->trail;
  for (std::int32_t x = 1; x <= 600; ++x)
    Relay("Bob", {x, 0, 1});
  EXPECT_EQ(trail.size(), MarkerBoard::kTrailPlaces);
  EXPECT_EQ(trail.back(), QPointF(600, 0));
  Relay("Bob", {601, 0, 2});
  EXPECT_EQ(trail.size(), 1U);
}

TEST(MembersModel, RowsFollowMembersThatComeAndGo) {
  client::Members members;
  MembersModel model(members);
  members.TakeRelay({"here and gone", {}}, Clock::now());
  members.Remove("here and gone");
  for (int i = 0; i < 100; ++i)
    members.TakeRelay({std::to_string(i), {}}, Clock::now());
  int left = 100;
  for (const int gone : {1, 60, 5}) {
    model.Update();
    for (int row = 0; row < gone; ++row)
      members.Remove(model.MemberAt(row)->name);
    model.Update();
    left -= gone;
    ASSERT_EQ(model.rowCount(), left);
    for (int row = 0; row < left; ++row)
      ASSERT_EQ(model.RowOf(*model.MemberAt(row)), row);
  }
}

TEST(Settings, PicturesLandmarksAndCirclesBelongToANetworkOfAServer) {
  const QTemporaryDir folder;
  const QString file = folder.filePath("map.ini");
  const auto picture = [](const char* path) {
    return MapPicture{MapPicture::Kind::Image, path, {1.5, -2}, 0.25};
  };
  {
    Settings settings(file);
    settings.SetPictureOf(3, picture("/old.png"));
    settings.SetLandmarks({{"Gate", "gate", 0xff00ff00, "Closed at night", 3, {1, 2}}});
    settings.SetCircles("[7]");
    settings.SetCurrentPlace({"Here", 1, "a/b 1%"});
    EXPECT_EQ(settings.PictureOf(3), picture("/old.png")) << "it moves to the first server";
    for (const PlaceKey& other : {PlaceKey{"Here", 2, "a/b 1%"}, {"here", 1, "a"}, {}}) {
      settings.SetCurrentPlace(other);
      EXPECT_TRUE(settings.Pictured().isEmpty() && settings.Landmarks().isEmpty());
      EXPECT_EQ(settings.Circles(), "");
    }
    settings.SetPictureOf(3, picture("/unplaced.png"));
    settings.SetCurrentPlace({"here", 1, "A/B 1%"});
    EXPECT_EQ(settings.PictureOf(3), picture("/old.png")) << "letter case does not matter";
    EXPECT_EQ(settings.Landmarks().value(0).note, "Closed at night");
    EXPECT_EQ(settings.Circles(), "[7]");
    for (const char* network : {"a", "b"})
      settings.Remember({"there", 1, network, "u", {}});
    settings.SetCurrentPlace({});
    settings.SetPictureOf(3, picture("/of all.png"));
  }
  Settings settings(file);
  EXPECT_EQ(settings.CurrentPlace().network, "b") << "the most recent";
  for (const char* network : {"a", "b"}) {
    settings.SetCurrentPlace({"there", 1, network});
    EXPECT_EQ(settings.PictureOf(3), picture("/of all.png")) << "from an older version";
  }
}

TEST(Settings, KeepTheLastTenServersTheNewestFirst) {
  const QTemporaryDir folder;
  Settings settings(folder.filePath("map.ini"));
  std::vector<std::uint16_t> ports{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 5};
  for (const std::uint16_t port : ports)
    settings.Remember({"h", port, "n", "u", {}});
  ports.clear();
  for (const RecentServer& server : settings.RecentServers())
    ports.push_back(server.port);
  EXPECT_EQ(ports, (std::vector<std::uint16_t>{5, 11, 10, 9, 8, 7, 6, 4, 3, 2}));
}

TEST(LabelPlacement, GivesNoPlaceTwiceNorOnAMarkerNorAcrossTheEdge) {
  LabelPlacement placement({-400, -100, 800, 200});
  placement.Avoid({300, 0, 10, 10});
  EXPECT_TRUE(placement.Take({-300, -10, 500, 20}));
  for (const QRect& meets : {QRect(-301, -29, 2, 20), QRect(199, 9, 5, 5), QRect(-50, 0, 2, 2),
                             QRect(260, 9, 60, 14), QRect(-401, 30, 50, 14)})
    EXPECT_FALSE(placement.Take(meets));
  for (const QRect& isFree : {QRect(-301, -30, 2, 20), QRect(200, 9, 5, 5)})
    EXPECT_TRUE(placement.Take(isFree));
}

}  // namespace
}  // namespace corvane::map
