#include <algorithm>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>

#include "map/recording/player.h"
#include "map/recording/recorder.h"
#include "map/recording/recording_export.h"
#include "map/recordings_dialog.h"
#include "map/replay_window.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

using client::Clock;
using client::Members;
using client::Report;
using std::chrono::milliseconds;

const RecordingSource kNorth{"127.0.0.1", 12000, "North"};

// The block of a second in which a member goes from 0, 0 to 1, 0, and has a name of that length.
QByteArray Block(qint64 begin, std::string name = "Ann") {
  BlockWriter writer(begin);
  client::Member member{std::move(name), {}, {}, true, true};
  for (const quint32 at : {0U, 500U}) {
    writer.BeginFrame(at);
    writer.Put(0, member, milliseconds(0));
    writer.EndFrame();
    member.report.x = 1;
  }
  return writer.Finish(1000);
}

class RecordingTest : public testing::Test {
 protected:
  Recording Only() { return *Recording::Open(myFolder.Paths().at(0)); }
  void Write(const QByteArray& bytes) {
    QFile file(Only().Path());
    ASSERT_TRUE(file.open(QFile::WriteOnly | QFile::Truncate));
    file.write(bytes);
  }

  QTemporaryDir myPlace;
  RecordingFolder myFolder{myPlace.path() + "/here"};
};

TEST_F(RecordingTest, ShowsAtEachTimeWhoWasThere) {
  using Seen = std::map<std::string, std::pair<Report, bool>>;
  const auto stateOf = [](const Members& members) {
    Seen state;
    for (const char* name : {"Ann", "Bob", "Cy", "a|b,\"c\"\n"}) {
      const client::Member* member = members.Find(name);
      if (member != nullptr) state[name] = {member->report, member->hasPlace};
    }
    return state;
  };
  Members heard;
  const auto relay = [&](const char* name, const Report& report) {
    return [&heard, name, report] { heard.TakeRelay({name, report}, Clock::now()); };
  };
  constexpr std::int32_t kLow = std::numeric_limits<std::int32_t>::min();
  constexpr std::int32_t kHigh = std::numeric_limits<std::int32_t>::max();
  const std::function<void()> steps[] = {
      [] {},
      relay("Bob", {kLow, kHigh, kLow, kHigh, true, true}),
      relay("Bob", {kHigh, kLow, kHigh, kLow}),
      [&] {
        heard.TakeListed({"Cy", {}}, Clock::now());
      },
      relay("a|b,\"c\"\n", {5, 5, 5, 5, true}),
      [&] { heard.Remove("Bob"); },
      relay("Ann", {3, -200, 1, 40, false, true}),
      relay("ANN", {4, -200, 1, 40}),
      [&] { heard.Remove("Ann"); },
      relay("Ann", {7, 7}),
      [&] { heard.Clear(); },
      relay("Bob", {}),
  };
  std::vector<std::pair<qint64, Seen>> seen;
  {
    Recorder recorder(heard, myPlace.path() + "/here", {milliseconds(5), milliseconds(150)});
    heard.TakeRelay({"Ann", {1, 2, 0, 60}}, Clock::now() - std::chrono::seconds(70));
    recorder.Start(kNorth);
    for (const auto& step : steps) {
      step();
      QTest::qWait(60);
      // Recorded times are rounded.
      seen.emplace_back(QDateTime::currentMSecsSinceEpoch() - 10, stateOf(heard));
    }
  }
  ASSERT_GT(Only().Blocks(), 2U);
  EXPECT_EQ(Only().Source(), kNorth);
  Members shown;
  Player player(Only(), shown);
  for (const auto& [time, state] : seen) {
    player.PlayTo(time);
    EXPECT_EQ(stateOf(shown), state) << "played on";
  }
  for (auto at = seen.rbegin(); at != seen.rend(); ++at) {
    player.JumpTo(at->first);
    EXPECT_EQ(stateOf(shown), at->second) << "jumped to";
  }
  const auto age = Player::ClockAt(seen[0].first) - shown.Find("Ann")->news;
  EXPECT_NEAR(std::chrono::duration<double>(age).count(), 70, 1);
  player.JumpTo(Only().End() + 10'000);
  EXPECT_EQ(shown.Count(), 0U) << "nobody is known to be there long after";
}

TEST_F(RecordingTest, IsReadUpToItsDamage) {
  for (const qint64 begin : {1000, 2000, 3000})
    ASSERT_EQ(myFolder.Append(kNorth, Block(begin), {}), "");
  QFile file(Only().Path());
  ASSERT_TRUE(file.open(QFile::ReadOnly));
  const QByteArray whole = file.readAll();
  const qsizetype size = Block(0).size();
  for (qsizetype cut = 1; cut < size; ++cut) {
    Write(whole.chopped(cut));
    EXPECT_EQ(Only().End(), 3000);
    EXPECT_EQ(Only().IsDamaged(), false) << "half a block is what a crash leaves";
  }
  for (qsizetype at = whole.size() - 2 * size; at < whole.size() - size; ++at) {
    QByteArray damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x80);
    Write(damaged);
    Members members;
    Player player(Only(), members);
    player.PlayTo(1900);
    EXPECT_EQ(members.Find("Ann")->report.x, 1);
    player.PlayTo(2600);
    EXPECT_TRUE(player.IsDamaged() || Only().IsDamaged()) << at;
  }
}

TEST_F(RecordingTest, KeepsWithinTheLimitsWhileItRecords) {
  const RecordingLimits limits{2, RecordingLimits::kMinMebibytes};
  const QByteArray block(600 << 10, 'x');
  const QDir files(myPlace.filePath("here"));
  for (int i = 0; i < 40; ++i)
    ASSERT_EQ(myFolder.Append(kNorth, block, limits), "");
  qint64 all = 0;
  for (const QFileInfo& file : files.entryInfoList(QDir::Files)) {
    EXPECT_LE(file.size(), 10 << 18);
    all += file.size();
  }
  EXPECT_TRUE(all > 7 << 20 && all <= 10 << 20) << all;
  for (const QFileInfo& info : files.entryInfoList(QDir::Files)) {
    QFile file(info.filePath());
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    file.setFileTime(QDateTime::currentDateTime().addDays(-3), QFile::FileModificationTime);
  }
  ASSERT_EQ(myFolder.Append({"other", 1, "North"}, Block(1000), limits), "");
  EXPECT_EQ(files.count() - 2, 1U) << "the others are too old";
  ASSERT_TRUE(myFolder.DeleteAll());
  ASSERT_EQ(myFolder.Append({"other", 1, "North"}, Block(1000), limits), "");
  EXPECT_EQ(Only().Source().host, "other") << "a new file";
  for (const qint64 begin : {2000, 1000, 1000 + 24 * 3600 * 1000})
    ASSERT_EQ(myFolder.Append({"other", 1, "North"}, Block(begin), limits), "");
  EXPECT_EQ(myFolder.Paths().size(), 3) << "the clock was set back, then a day is over";
}

TEST_F(RecordingTest, AFileThatCannotBeWrittenStopsIt) {
  ASSERT_TRUE(QFile(myPlace.filePath("here")).open(QFile::WriteOnly));
  Members heard;
  Recorder recorder(heard, myPlace.filePath("here"), {milliseconds(1), milliseconds(1)});
  QString reason;
  recorder.Failed = [&](const QString& text) { reason = text; };
  recorder.Start(kNorth);
  heard.TakeRelay({"Ann", {}}, Clock::now());
  EXPECT_TRUE(PumpUntil([&] { return !reason.isEmpty(); }));
  EXPECT_FALSE(recorder.IsOn());
}

TEST_F(RecordingTest, AReplayTakesNoPicturesFromTheFirstServer) {
  ASSERT_EQ(myFolder.Append(kNorth, Block(1000), {}), "");
  const QString file = myPlace.filePath("map.ini");
  Settings(file).SetPictureOf(3, {MapPicture::Kind::Tiles, "/x", {}, 1});
  QWidget owner;
  const ReplayWindow replay(Only(), file, myPlace.path(), owner);
  EXPECT_EQ(Settings(file).Pictured(), QList<int>{3});
}

TEST_F(RecordingTest, IsExportedWithoutFormulas) {
  qint64 begin = 1000;
  for (const char* name : {"=1+1", "-\"x\"", "a\nb", "\xEF\xBC\xA0,"})
    ASSERT_EQ(myFolder.Append(kNorth, Block(std::exchange(begin, begin + 2000), name), {}), "");
  const auto exported = [&](const char* name) {
    EXPECT_EQ(Export(Only(), myPlace.filePath(name), {}, [](int) {}), "");
    QFile file(myPlace.filePath(name));
    EXPECT_TRUE(file.open(QFile::ReadOnly));
    return file.readAll();
  };
  EXPECT_EQ(exported("a.csv"),
            "time,name,x,y,facet,hitPoints,inBattle,dead\r\n"
            "1970-01-01T00:00:01.000Z,\"'=1+1\",0,0,0,0,0,0\r\n"
            "1970-01-01T00:00:01.500Z,\"'=1+1\",1,0,0,0,0,0\r\n"
            "1970-01-01T00:00:03.000Z,\"'-\"\"x\"\"\",0,0,0,0,0,0\r\n"
            "1970-01-01T00:00:03.500Z,\"'-\"\"x\"\"\",1,0,0,0,0,0\r\n"
            "1970-01-01T00:00:05.000Z,\"a\\nb\",0,0,0,0,0,0\r\n"
            "1970-01-01T00:00:05.500Z,\"a\\nb\",1,0,0,0,0,0\r\n"
            "1970-01-01T00:00:07.000Z,\"'\xEF\xBC\xA0,\",0,0,0,0,0,0\r\n"
            "1970-01-01T00:00:07.500Z,\"'\xEF\xBC\xA0,\",1,0,0,0,0,0\r\n");
  const QJsonArray features =
      QJsonDocument::fromJson(exported("a.geojson")).object()["features"].toArray();
  ASSERT_EQ(features.size(), 8);
  EXPECT_EQ(features[3]["geometry"]["coordinates"], (QJsonArray{1, 0}));
  EXPECT_EQ(features[3]["properties"]["name"].toString(), "-\"x\"");
}

TEST_F(MapTest, RecordsOnlyWhenSwitchedOnAndReplaysInAWindowOfItsOwn) {
  const auto files = [&] {
    const auto all = QDir(myFolder.filePath("map Recordings")).entryInfoList(QDir::Files);
    return std::ranges::count_if(all, [](const QFileInfo& file) { return file.size() > 0; });
  };
  const auto bob = Member("Bob", "100,200,3,50,0,0");
  QTest::qWait(600);
  const auto showsRecording = [&] {
    return myWindow->stsLine->lblState->text().contains("Recording");
  };
  EXPECT_FALSE(showsRecording());
  myWindow->actions->actRecord->trigger();
  EXPECT_TRUE(showsRecording());
  QTest::qWait(600);
  bob->Send(4, "110,200,3,40,0,0");
  ASSERT_TRUE(Knows("Bob", {110, 200, 3, 40}));
  QTest::qWait(600);
  myWindow->actions->actRecord->trigger();
  ASSERT_TRUE(PumpUntil([&] { return files() == 1; })) << "and none before it was switched on";

  myWindow->actions->actRecordings->trigger();
  auto* dialog = Opened<RecordingsDialog>("RecordingsDialog");
  ASSERT_EQ(dialog->lstRecordings->topLevelItemCount(), 1);
  EXPECT_EQ(dialog->lstRecordings->topLevelItem(0)->text(0), "North");
  EXPECT_EQ(dialog->lstRecordings->topLevelItem(0)->text(5), "1");
  const QString csv = myFolder.filePath("out.csv");
  dialog->ExportTo(csv);
  EXPECT_TRUE(PumpUntil([&] { return dialog->lblNote->text().contains("out.csv"); }));
  EXPECT_GT(QFile(csv).size(), 100);
  Click(dialog->btnPlay);

  const auto replays = myWindow->findChildren<ReplayWindow*>("ReplayWindow");
  ASSERT_EQ(replays.size(), 1);
  ReplayWindow& replay = *replays[0];
  replay.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&replay));
  const auto place = [&] { return replay.Shown().Find("Bob")->report; };
  EXPECT_EQ(replay.cmbFacet->currentText(), "3");
  EXPECT_EQ(place(), (Report{100, 200, 3, 50}));
  EXPECT_TRUE(PumpUntil([&] { return place() == Report{110, 200, 3, 40}; })) << "it plays";
  Click(replay.btnPlay);
  const qint64 paused = replay.Time();
  QTest::qWait(100);
  EXPECT_EQ(replay.Time(), paused);
  replay.sldTime->setFocus();
  QTest::keyClick(replay.sldTime, Qt::Key_Home);
  EXPECT_EQ(place(), (Report{100, 200, 3, 50}));
  const QPoint at = replay.map->mapFromScene({100, 200});
  QTest::mouseClick(replay.map->viewport(), Qt::LeftButton, {}, at);
  replay.map->setFocus();
  QTest::keyClick(replay.map, Qt::Key_F);
  QTest::keyClick(replay.sldTime, Qt::Key_End);
  EXPECT_TRUE(replay.map->IsFollowing());
  const auto offCentre = [&] {
    return replay.map->mapFromScene({110, 200}) - replay.map->viewport()->rect().center();
  };
  EXPECT_TRUE(PumpUntil([&] { return offCentre().manhattanLength() < 6; }))
      << "a followed member is followed beyond a jump" << offCentre().x() << " " << offCentre().y();
  EXPECT_EQ(Find("Bob")->report, (Report{110, 200, 3, 40})) << "the live map is not touched";
  replay.close();

  myWindow->actions->actRecordings->trigger();
  dialog = Opened<RecordingsDialog>("RecordingsDialog");
  for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
    EXPECT_EQ(files(), 1);
    Click(dialog->btnDeleteAll);
    Click(Opened<QMessageBox>("DeleteQuestion")->button(answer));
  }
  EXPECT_EQ(files(), 0);
  EXPECT_EQ(dialog->lstRecordings->topLevelItemCount(), 0);
}

}  // namespace
}  // namespace corvane::map
