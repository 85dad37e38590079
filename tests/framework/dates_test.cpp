#include "framework/dates.h"

#include <QLocale>
#include <gtest/gtest.h>

namespace corvane {
namespace {

const QDateTime kDate(QDate(2024, 3, 9), QTime(17, 5, 7));

TEST(Dates, StoredDateReadsBackToTheSecond) {
  EXPECT_EQ(StoredDate(kDate), "2024-03-09 17:05:07");
  EXPECT_EQ(DateFromStored(StoredDate(kDate)), kDate);
  for (const int hours : {0, 5, -5}) {
    EXPECT_EQ(StoredDate(kDate.toOffsetFromUtc(hours * 3600)), "2024-03-09 17:05:07");
  }
}

TEST(Dates, OtherFormsOfAStoredDateAreRead) {
  EXPECT_EQ(DateFromStored("2024-03-09T17:05:07"), kDate);
  EXPECT_EQ(DateFromStored("2024-03-09"), kDate.date().startOfDay());
  for (const char* text : {"", "yesterday", "2024-13-09 17:05:07", "2024-03-09 25:05:07", "9"}) {
    EXPECT_FALSE(DateFromStored(text).isValid()) << text;
  }
}

TEST(Dates, ShownDateFollowsTheOperatorsLocale) {
  const QLocale previous;
  QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
  EXPECT_EQ(ShortDateAndTime(kDate), "3/9/24 5:05 PM");
  QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  EXPECT_EQ(ShortDateAndTime(kDate), "09.03.24 17:05");
  EXPECT_EQ(ShortDateAndTime({}), "");
  QLocale::setDefault(previous);
}

}  // namespace
}  // namespace corvane
