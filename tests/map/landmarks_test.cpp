#include <QApplication>
#include <QCheckBox>
#include <QContextMenuEvent>
#include <QFile>
#include <QMessageBox>

#include "map/landmark_dialog.h"
#include "map/landmark_list.h"
#include "map/places/geo_json.h"
#include "map/places/landmark_icons.h"
#include "map/text_dialog.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

using testing::ElementsAre;

const Landmark kGate{"Gate", "gate", 0xff00ff00, "Closed at night", 0, {300, -20.5}};

QByteArray FileOf(const QByteArray& features) {
  return R"({"type":"FeatureCollection","features":[)" + features + "]}";
}

TEST(GeoJson, SkipsWhatIsNoPointOnTheMap) {
  const QByteArray point = R"({"type":"Feature","geometry":{"type":"Point","coordinates":)";
  const auto content = FromGeoJson(
      FileOf(point + R"([1,2]},"properties":{"name":")" + QByteArray(300, 'x') +
             R"(","colour":"red","facet":"x"}},)" + point + R"([16777217,2]}},)" + point +
             R"([1]}},)" + point + R"(["1",2]}},)" + point + R"([1e300,2]}},7,)" +
             R"({"type":"Feature","geometry":{"type":"LineString","coordinates":[[1,2],[3,4]]}},)" +
             point + R"([-4,5,6]},"properties":null})"));
  EXPECT_EQ(content.skipped, 6);
  ASSERT_EQ(content.landmarks.size(), 2);
  Landmark cut;
  cut.name = QString(Landmark::kMaxName, 'x');
  cut.at = {1, 2};
  EXPECT_EQ(content.landmarks[0], cut);
  EXPECT_EQ(content.landmarks[1].at, QPointF(-4, 5));
  for (const char* bad :
       {"", "{", "[]", R"({"type":"Feature"})", R"({"type":"FeatureCollection"})"})
    EXPECT_NE(FromGeoJson(bad).error, "") << bad;
}

TEST(Ping, IsReadOnlyInItsOwnForm) {
  const Ping camp{"Old Camp", 1200, -845, 2};
  EXPECT_EQ(ToMessage(camp), "Old Camp: 1200, -845, facet 2");
  EXPECT_EQ(ParsePing(ToMessage(camp)), camp);
  for (const char* other : {"Camp: 1200, 845", "1200, 845, facet 2", ": 1, 2, facet 3",
                            "A:B: 1, 2, facet 3", "Camp: 1.5, 2, facet 3", "Camp: 1, 2, facet 3 ",
                            "Camp: 1, 2, facet 3\n", " C: 1, 2, facet 3", "C\u202e: 1, 2, facet 3",
                            "Camp: 16777217, 2, facet 3", "Camp: 1, 2, facet 1234567890"})
    EXPECT_FALSE(ParsePing(QString::fromUtf8(other))) << other;
}

class LandmarksTest : public WindowTest {
 protected:
  const QList<Landmark>& All() { return myWindow->Marks().Board().All(); }
  void ClickOnMap(QPointF place) {
    QTest::mouseClick(myWindow->map->viewport(), Qt::LeftButton, {}, OnMap(place));
  }
  QString Write(const QByteArray& text) {
    QFile file(myFolder.filePath("in.geojson"));
    EXPECT_TRUE(file.open(QFile::WriteOnly));
    file.write(text);
    return file.fileName();
  }
};

TEST_F(LandmarksTest, ArePlacedEditedMovedAndDeleted) {
  myWindow->map->CentreOn(QPointF(50, 60), 0);
  myWindow->actions->actPlaceLandmark->trigger();
  ClickOnMap({80, 90});
  auto* dialog = Opened<LandmarkDialog>("LandmarkDialog");
  Type(dialog->txtName, "Mill");
  QTest::keyClick(dialog->lstIcons, Qt::Key_Right);
  Type(dialog->spnFacet, "3");
  Type(dialog->txtNote, QString(Landmark::kMaxNote + 1, 'x'));
  EXPECT_FALSE(dialog->btnOK->isEnabled());
  dialog->txtNote->setPlainText("Burnt\ndown");
  Click(dialog->btnOK);
  const QPointF place = All().value(0).at;
  EXPECT_LE((place - QPointF(80, 90)).manhattanLength(), 2);
  EXPECT_EQ(All(), (QList<Landmark>{{"Mill", "flag", Landmark().colour, "Burnt\ndown", 3, place}}));

  myWindow->close();
  MakeWindow();
  myWindow->Marks().Board().Add({kGate});
  myWindow->actions->actLandmarkList->trigger();
  auto* list = Opened<LandmarkList>("LandmarkList");
  Type(list->txtSearch, "burn");
  EXPECT_EQ(list->lblCount->text(), "1 of 2");
  QTest::keyClick(list->lstLandmarks, Qt::Key_End);
  EXPECT_EQ(myWindow->Facet(), 3) << "the choice goes there";
  EXPECT_LE((myWindow->map->mapToScene(myWindow->map->viewport()->rect().center()) - place)
                .manhattanLength(),
            3);
  const auto colour = [&] { return Painted().pixel(OnMap(place) + QPoint(4, -14)); };
  EXPECT_EQ(colour(), Landmark().colour);
  myWindow->actions->actShowLandmarks->trigger();
  EXPECT_NE(colour(), Landmark().colour);
  myWindow->actions->actShowLandmarks->trigger();

  const auto move = [&] {
    QTest::qWait(0);  // an earlier menu is deleted
    const QPoint at = OnMap(place) - QPoint(0, 8);
    QContextMenuEvent event(QContextMenuEvent::Mouse, at,
                            myWindow->map->viewport()->mapToGlobal(at));
    QApplication::sendEvent(myWindow->map->viewport(), &event);
    auto* menu = myWindow->findChild<QMenu*>("mnuLandmark");
    ASSERT_NE(menu, nullptr);
    QTest::keyClick(menu, Qt::Key_M);
  };
  move();
  QTest::keyClick(myWindow->map, Qt::Key_Escape);
  ClickOnMap({0, 0});
  EXPECT_EQ(All()[0].at, place) << "Esc cancels";
  move();
  QTest::keyClick(myWindow->map, Qt::Key_Left);
  QTest::keyClick(myWindow->map, Qt::Key_Return);
  EXPECT_LT(All()[0].at.x(), place.x() - 50) << "Return takes the middle";
  Click(list->btnDelete);
  auto* question = Opened<QMessageBox>("DeleteQuestion");
  for (QAbstractButton* button : question->buttons()) {
    if (question->buttonRole(button) == QMessageBox::AcceptRole) Click(button);
  }
  EXPECT_THAT(All(), ElementsAre(kGate));
}

TEST_F(LandmarksTest, ImportAddsOnceAndAFailureLosesNothing) {
  LandmarkBoard& board = myWindow->Marks().Board();
  board.Add({kGate});
  const QString file = myFolder.filePath("out.geojson");
  myWindow->Marks().Export(file);
  Landmark other = kGate;
  other.facet = 5;
  board.Replace(kGate, other);
  for (int i = 0; i < 2; ++i)
    myWindow->Marks().Import(file);
  EXPECT_TRUE(Shows("0 landmarks imported. 1 were there already."));
  EXPECT_THAT(All(), ElementsAre(other, kGate));
  QList<Landmark> many(Landmark::kMaxCount - 1, kGate);
  for (int i = 0; i < many.size(); ++i)
    many[i].at.setX(i + 1000);
  const std::pair<QByteArray, const char*> failures[] = {
      {"{]", "it is no JSON"},
      {ToGeoJson(many), "more than 10000"},
      {QByteArray(kMaxGeoJson / 2, '['), "too many values"},
      {QByteArray(kMaxGeoJson + 1, ' '), "larger than 20 MiB"}};
  for (const auto& [bytes, why] : failures) {
    myWindow->Marks().Import(Write(bytes));
    EXPECT_TRUE(Shows(why));
  }
  myWindow->Marks().Import(myFolder.path());
  EXPECT_TRUE(Shows("no such file"));
  EXPECT_THAT(All(), ElementsAre(other, kGate));
}

TEST_F(MapTest, PingReachesEveryoneAndFades) {
  const auto bob = Member("Bob", "1000,1000,0,50,0,0");
  ASSERT_TRUE(ComesOnMap({1000, 1000}));
  myWindow->map->CentreOn(QPointF(100, 100), 0);
  myWindow->actions->actPing->trigger();
  QTest::mouseClick(myWindow->map->viewport(), Qt::LeftButton, {}, OnMap({100.5, 100.5}));
  auto* dialog = Opened<TextDialog>("TextDialog");
  Type(dialog->txtText, "Ca:mp");
  EXPECT_FALSE(dialog->btnOK->isEnabled());
  Type(dialog->txtText, "Camp");
  QTest::keyClick(dialog->findChild<QCheckBox*>("chkUnasked"), Qt::Key_Space);
  Click(dialog->btnOK);
  std::optional<WireMessage> received = bob->Receive();
  while (received && received->command != 998)
    received = bob->Receive();
  ASSERT_TRUE(received);
  const std::string& message = received->payload;
  EXPECT_EQ(message, "Camp: 100, 100, facet 0");
  ASSERT_TRUE(Shows(QString::fromStdString(message)));
  ASSERT_EQ(myWindow->ShownPings().All().size(), 1U);
  const auto since = myWindow->ShownPings().All()[0].since;
  const QRgb ping = Painted().pixel(OnMap({100, 100}));
  myWindow->ShownPings().Advance(since + std::chrono::seconds(59));
  EXPECT_EQ(Painted().pixel(OnMap({100, 100})), ping);
  myWindow->ShownPings().Advance(since + std::chrono::seconds(60));
  EXPECT_NE(Painted().pixel(OnMap({100, 100})), ping);
  myWindow->actions->actPing->trigger();
  QTest::keyClick(myWindow->map, Qt::Key_Return);
  dialog = Opened<TextDialog>("TextDialog");
  EXPECT_FALSE(dialog->findChild<QCheckBox*>("chkUnasked")->isVisible());
}

}  // namespace
}  // namespace corvane::map
