#include <gtest/gtest.h>

#include "viewer/label_placement.h"
#include "viewer/motion.h"

namespace corvane::viewer {
namespace {

using client::Clock;
using std::chrono::milliseconds;

TEST(Motion, WalksEvenlyToWhereItIsSaidToBeAndLeapsFarWays) {
  const Clock::time_point start = Clock::now();
  Motion motion({0, 0});
  motion.GoTo({10, 0}, start);
  motion.JumpTo({10, 0});
  motion.GoTo({20, 0}, start + milliseconds(500));
  EXPECT_EQ(motion.At(start + milliseconds(500)), QPointF(10, 0));
  EXPECT_EQ(motion.At(start + milliseconds(750)), QPointF(15, 0)) << "as long as the report took";
  EXPECT_TRUE(motion.IsUnderway(start + milliseconds(999)));
  // A report in the middle leads on from where it is shown.
  motion.GoTo({15, 8}, start + milliseconds(750));
  EXPECT_EQ(motion.At(start + milliseconds(750)), QPointF(15, 0));
  EXPECT_EQ(motion.At(start + milliseconds(5000)), QPointF(15, 8));
  motion.GoTo({5000, 8}, start + milliseconds(6000));
  EXPECT_EQ(motion.At(start + milliseconds(6000)), QPointF(5000, 8));
}

TEST(LabelPlacement, GivesNoPlaceTwiceNorAtAMarkerNorAtTheEdge) {
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
}  // namespace corvane::viewer
