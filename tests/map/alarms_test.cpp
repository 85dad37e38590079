#include "map/alarms/alarm_text.h"
#include "map/alarms_dialog.h"
#include "map/text_dialog.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

using client::Clock;
using client::Report;
using std::chrono::hours;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(AlarmRules, AreStoredAndBounded) {
  AlarmRules rules;
  rules.who.fill(AlarmFor::Followed);
  rules.isShare = rules.alertsWindow = false;
  rules.notifies = rules.beeps = true;
  rules.hitPoints = 300;
  rules.silence = rules.cooldown = 77;
  rules.circles = {{"Camp %1 \"", -3, {-5, 2'000'000'000}, 9}};
  EXPECT_EQ(AlarmRules::FromJson(rules.ToJson(), rules.CirclesToJson()), rules);
  const char* const kDamaged[] = {
      "", "[]", "{", "{\"who\":7,\"hitPoints\":\"x\"}",
      "{\"who\":[null,{}],\"silence\":1e99,\"cooldown\":0.5,\"isShare\":1}"};
  for (const char* json : kDamaged)
    EXPECT_EQ(AlarmRules::FromJson(json, json), AlarmRules()) << json;
  AlarmRules bounded;
  bounded.who[0] = AlarmFor::Everybody;
  bounded.who[1] = AlarmFor::Nobody;
  bounded.hitPoints = 1;
  bounded.silence = AlarmRules::kMinSilence;
  bounded.cooldown = AlarmRules::kMaxSeconds;
  bounded.circles.resize(AlarmRules::kMaxCircles);
  EXPECT_EQ(
      AlarmRules::FromJson(R"({"who":[99,-1],"hitPoints":0,"silence":-4,"cooldown":2000000000})",
                           R"([{"radius":-7})" + QByteArray(",7").repeated(30) + "]"),
      bounded);
}

class AlarmWatchTest : public testing::Test {
 protected:
  AlarmWatchTest() {
    rules.who.fill(AlarmFor::Everybody);
    rules.silence = 60;
    rules.circles = {{"Camp", 2, {100, 100}, 10}};
    watch.IsFollowed = [this](const client::Member& member) { return member.name == followed; };
    watch.Raised = [this](const Alarm& alarm) {
      raised.push_back(TextFromDisplay(SentenceOf(alarm, watch.Rules())));
    };
    watch.SetRules(rules);
  }

  std::vector<std::string> Relay(const Report& report, const std::string& name = "Bob") {
    members.TakeRelay({name, report}, now);
    return std::exchange(raised, {});
  }
  std::vector<std::string> Own(const Report& report) {
    watch.TakeOwn(report);
    return std::exchange(raised, {});
  }
  // The alarms of that many seconds.
  std::vector<std::string> Wait(int time) {
    for (int i = 0; i < time; ++i) {
      now += seconds(1);
      watch.Advance();
    }
    return std::exchange(raised, {});
  }
  std::string State(const std::string& name = "Bob") {
    const client::Member& member = *members.Find(name);
    return TextFromDisplay(StateText(watch.StateOf(&member), member.report, watch.Rules()));
  }

  Clock::time_point now = Clock::now();
  client::Members members;
  AlarmRules rules;
  std::string followed = "Bob";
  std::vector<std::string> raised;
  AlarmWatch watch{members, [this] { return now; }};
};

TEST_F(AlarmWatchTest, RaisesWhatBegins) {
  EXPECT_THAT(Relay({0, 0, 0, 119}), IsEmpty());
  EXPECT_THAT(Relay({0, 0, 0, 30}), IsEmpty()) << "25 % of 119 are 29.75";
  EXPECT_THAT(Relay({0, 0, 0, 12}), ElementsAre("Bob is down to 12 of 119 hit points"));
  EXPECT_EQ(State(), "! Low HP");
  EXPECT_THAT(Relay({1, 0, 0, 11, true}), ElementsAre("Bob is in battle"));
  EXPECT_EQ(State(), "! In battle, low HP");
  EXPECT_THAT(Relay({1, 0, 0, -1, true, true}), ElementsAre("Bob is dead"));
  EXPECT_EQ(State(), "! Dead");
  EXPECT_THAT(Relay({100, 100, 1, 119}), IsEmpty());
  EXPECT_EQ(State(), "");
  EXPECT_THAT(Relay({100, 100, 2, 119}), ElementsAre("Bob has entered Camp"));
  EXPECT_EQ(State(), "! Camp");
  EXPECT_THAT(Own({111, 100, 2, 119}), IsEmpty());
  EXPECT_THAT(Own({110, 100, 2, 12, true}),
              ElementsAre("You are down to 12 of 119 hit points", "You are in battle",
                          "You have entered Camp"));
  EXPECT_THAT(Relay({0, 0, 0, 9}, "%1\n<b>"), IsEmpty());
  EXPECT_THAT(Relay({0, 0, 0, 9, false, true}, "%1\n<b>"), ElementsAre("%1\\n<b> is dead"));
}

TEST_F(AlarmWatchTest, AFirstReportAndNewRulesShowAStateAndRaiseNothing) {
  members.TakeListed({"Bob", {}}, now);
  EXPECT_THAT(Relay({100, 100, 2, 0, true, true}), IsEmpty());
  EXPECT_EQ(State(), "! Dead, Camp");
  members.TakeListed({"Cy", {}}, now);
  rules.isShare = false;
  rules.hitPoints = 50;
  watch.SetRules(rules);
  EXPECT_EQ(State("Cy"), "") << "it has not reported";
  EXPECT_THAT(Relay({0, 0, 0, 0}, "Cy"), IsEmpty());
  EXPECT_EQ(State("Cy"), "") << "its client reports no hit points";
  EXPECT_THAT(Relay({0, 0, 0, 49}, "Cy"), ElementsAre("Cy is down to 49 of 49 hit points"));
  rules.hitPoints = 49;
  watch.SetRules(rules);
  EXPECT_EQ(State("Cy"), "");
  EXPECT_THAT(Relay({0, 0, 0, 2'147'483'647}, "Cy"), IsEmpty());
  members.TakeListed({"Cy", {}}, now);
  EXPECT_EQ(State("Cy"), "") << "it has lost its place";
  EXPECT_THAT(raised, IsEmpty());
}

TEST_F(AlarmWatchTest, SilenceIsRaisedOnceAndNotAfterAJumpOfTheClock) {
  Relay({0, 0, 0, 100});
  EXPECT_THAT(Wait(70), IsEmpty()) << "when the first report was sent is unknown";
  Relay({1, 0, 0, 100});
  EXPECT_THAT(Wait(59), IsEmpty());
  for (const auto jump : {hours(5), hours(-9)}) {
    now += jump;
    EXPECT_THAT(Wait(59), IsEmpty());
  }
  EXPECT_THAT(Wait(90), ElementsAre("Bob has sent nothing for 60 seconds"));
  EXPECT_EQ(State(), "! Silent");
  Relay({2, 0, 0, 100});
  EXPECT_EQ(State(), "");
}

TEST_F(AlarmWatchTest, ACooldownAndTheHighestHitPointsOutlastAnAbsence) {
  const Report low{0, 0, 0, 10};
  const Report well{0, 0, 0, 100};
  Relay(well);
  EXPECT_THAT(Relay(low), ElementsAre("Bob is down to 10 of 100 hit points"));
  Relay(well);
  Wait(29);
  members.Clear();
  EXPECT_THAT(Relay(low, "BOB"), IsEmpty());
  EXPECT_EQ(State(), "! Low HP");
  Relay(well);
  EXPECT_THAT(Relay(low), IsEmpty()) << "the last alarm was 29 seconds ago";
  EXPECT_THAT(Relay({0, 0, 0, 10, false, true}), ElementsAre("Bob is dead"));
  Relay(well);
  Wait(1);
  EXPECT_THAT(Relay(low), ElementsAre("Bob is down to 10 of 100 hit points"));
  members.Clear();
  watch.ForgetGone();
  Relay(low);
  EXPECT_EQ(State(), "") << "in another network it is another member";
}

TEST_F(AlarmWatchTest, WatchesWhomTheRuleNames) {
  rules.cooldown = 0;
  for (const AlarmFor who : {AlarmFor::Nobody, AlarmFor::Own, AlarmFor::Followed,
                             AlarmFor::OwnAndFollowed, AlarmFor::Everybody}) {
    rules.For(AlarmKind::Death) = who;
    watch.SetRules(rules);
    const bool isAll = who == AlarmFor::Everybody;
    const bool isBoth = isAll || who == AlarmFor::OwnAndFollowed;
    for (const bool isDead : {false, true}) {
      const Report report{isDead, 0, 0, 100, false, isDead};
      EXPECT_EQ(Relay(report).size(), isDead && (isBoth || who == AlarmFor::Followed));
      EXPECT_EQ(Relay(report, "Cy").size(), isDead && isAll);
      EXPECT_EQ(Own(report).size(), isDead && (isBoth || who == AlarmFor::Own));
      EXPECT_EQ(State("Cy"), isDead && isAll ? "! Dead" : "");
    }
  }
}

class AlarmWindowTest : public MapTest {
 protected:
  AlarmsDialog& Ask() {
    myWindow->actions->actAlarms->trigger();
    return *Opened<AlarmsDialog>("AlarmsDialog");
  }
  QWidget* Surface() { return myWindow->map->viewport(); }
};

TEST_F(AlarmWindowTest, AnAlarmIsWrittenAndMarkedInTheListAndOnTheMap) {
  AlarmsDialog& dialog = Ask();
  QTest::keyClick(dialog.cmbWho[0], Qt::Key_End);
  QTest::keyClick(&dialog, Qt::Key_Return);
  const auto bob = Member("Bob", "10,20,0,100,0,0");
  myWindow->map->ShowAll();
  const auto isMarked = [&] {
    return Painted().pixel(OnMap({10, 20}) + QPoint(-13, 0)) == 0xffb3261e;
  };
  EXPECT_FALSE(isMarked());
  bob->Send(4, "10,20,0,20,1,0");
  EXPECT_TRUE(Shows("Alarm: Bob is down to 20 of 100 hit points"));
  EXPECT_TRUE(RowsAre({"Bob|10|20|0|20|! In battle, low HP"}));
  const QModelIndex state =
      myWindow->pnlMembers->lstMembers->model()->index(1, MembersModel::kState);
  EXPECT_EQ(state.data(Qt::BackgroundRole), QColor(0xb3, 0x26, 0x1e));
  EXPECT_TRUE(isMarked());
  myWindow->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&*myWindow));
  QTest::keyClick(myWindow->map, Qt::Key_M, Qt::ControlModifier);
  EXPECT_TRUE(myWindow->stsLine->lblState->text().startsWith("Alarms silenced. Ann"));
}

TEST_F(AlarmWindowTest, ACircleIsDrawnNamedEditedAndDeleted) {
  const auto bob = Member("Bob", "1000,1000,0,100,0,0");
  // The map shows the first member by itself, once, and must not do so later.
  ASSERT_TRUE(PumpUntil([&] {
    return (OnMap({1000, 1000}) - Surface()->rect().center()).manhattanLength() < 20;
  }));
  const auto hint = [&] { return myWindow->barState->lblText->text(); };
  const auto drag = [&](QPoint from, QPoint to) {
    // One tool works at a time.
    myWindow->actions->actPlaceLandmark->trigger();
    myWindow->actions->actDrawCircle->trigger();
    EXPECT_TRUE(hint().startsWith("Drag"));
    QTest::mousePress(Surface(), Qt::LeftButton, {}, from);
    QTest::mouseMove(Surface(), to);
    QTest::mouseRelease(Surface(), Qt::LeftButton, {}, to);
  };
  const QPointF before = myWindow->map->mapToScene(0, 0);
  drag({50, 60}, {50, 61});
  EXPECT_FALSE(IsOpen("TextDialog")) << "a click draws nothing";
  QTest::keyClick(myWindow->pnlMembers->lstMembers, Qt::Key_Escape);
  EXPECT_EQ(hint(), "");
  drag({50, 60}, {110, 140});
  EXPECT_EQ(myWindow->map->mapToScene(0, 0), before) << "the map has not moved";
  auto* name = Opened<TextDialog>("TextDialog");
  EXPECT_EQ(name->txtText->text(), "Circle 1");
  QTest::keyClicks(name->txtText, "Camp");
  QTest::keyClick(name, Qt::Key_Return);
  const QPoint centre = myWindow->map->mapToScene(50, 60).toPoint();
  bob->Send(4, std::to_string(centre.x()) + "," + std::to_string(centre.y()) + ",0,100,0,0");
  EXPECT_TRUE(Shows("Alarm: Bob has entered Camp"));

  AlarmsDialog& dialog = Ask();
  const auto cell = [&](int row, int column) {
    return dialog.lstCircles->item(row, column)->text();
  };
  EXPECT_EQ(cell(0, 0), "Camp");
  EXPECT_EQ(cell(0, 2), QString::number(centre.x()));
  const double scale = myWindow->map->transform().m11();
  EXPECT_NEAR(cell(0, 4).toInt(), 100 / scale, 1);
  Click(dialog.btnAdd);
  EXPECT_EQ(cell(1, 0), "Circle 2");
  QTest::keyClick(dialog.lstCircles, Qt::Key_F2);
  QTest::keyClicks(QApplication::focusWidget(), "Gate");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  dialog.lstCircles->setCurrentCell(0, 0);
  QTest::keyClick(dialog.lstCircles, Qt::Key_Delete);
  Click(dialog.btnOK);
  EXPECT_TRUE(RowsAre(
      {"Bob|" + std::to_string(centre.x()) + "|" + std::to_string(centre.y()) + "|0|100|Alive"}));
  myWindow.reset();
  MakeWindow();
  AlarmsDialog& later = Ask();
  ASSERT_EQ(later.lstCircles->rowCount(), 1);
  EXPECT_EQ(later.lstCircles->item(0, 0)->text(), "Gate");
  myWindow->LoginTo({"127.0.0.1", 1, "North", "Ann", {}});
  EXPECT_FALSE(IsOpen("AlarmsDialog")) << "it shows the circles of another place";
  EXPECT_TRUE(myWindow->Alarms().Watch().Rules().circles.isEmpty());
}

}  // namespace
}  // namespace corvane::map
