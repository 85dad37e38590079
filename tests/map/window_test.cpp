#include <QApplication>
#include <QMenu>
#include <QTextBlock>
#include <QTreeWidget>

#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

class FrameTest : public MapTest {
 protected:
  double MapShare() {
    const QSize map = myWindow->map->size();
    return double(map.width()) * map.height() / (double(myWindow->width()) * myWindow->height());
  }
  void Resize(QSize size) {
    myWindow->resize(size);
    QTest::qWait(0);
  }
  void Restart() {
    myWindow->close();
    MakeWindow();
    QTest::qWait(0);
  }
  bool Says(const QString& text) {
    const auto* bar = myWindow->barState;
    return PumpUntil([&] { return bar->isVisible() && bar->lblText->text().contains(text); });
  }
  QTableView& List() { return *myWindow->pnlMembers->lstMembers; }
  QLineEdit& Filter() { return *myWindow->pnlMembers->fldFilter; }
};

TEST_F(FrameTest, TheMapHasMostOfTheWindowAndChoicesStay) {
  QSettings(myFolder.filePath("map.ini"), QSettings::IniFormat)
      .setValue("stored/layout", QByteArray("[no layout"));
  Restart();
  Click(myWindow->barOwn->chkSend);
  for (const QSize size : {QSize(640, 480), QSize(800, 600), QSize(1180, 760), QSize(1700, 850)}) {
    Resize(size);
    EXPECT_EQ(myWindow->size(), size);
    EXPECT_GE(MapShare(), 0.7) << size.width();
    if (size.width() < 1000) continue;
    EXPECT_TRUE(List().isVisible());
    EXPECT_TRUE(myWindow->txtMessages->isVisible());
  }
  const QFont usual = QApplication::font();
  QFont large = usual;
  large.setPointSize(18);
  QApplication::setFont(large);
  Resize({1180, 760});
  Restart();
  EXPECT_GE(MapShare(), 0.7);
  EXPECT_TRUE(List().isVisible());
  QApplication::setFont(usual);
  Restart();
  for (const char* line : {"one", "two", "three"})
    myWindow->txtMessages->Add(line);
  ASSERT_TRUE(Shows("three"));
  EXPECT_EQ(myWindow->txtMessages->cursorForPosition({9, 9}).block().text().right(3), "two");
  // What is opened in a small window stays open there, also after a restart, but not in a smaller
  // one.
  Resize({510, 410});
  myWindow->actions->actMembers->trigger();
  myWindow->actions->actMessages->trigger();
  List().horizontalHeader()->actions().at(MembersModel::kX - 1)->trigger();
  Restart();
  EXPECT_EQ(myWindow->size(), QSize(510, 410));
  EXPECT_TRUE(List().isVisible());
  EXPECT_FALSE(List().isColumnHidden(MembersModel::kX));
  EXPECT_TRUE(List().isColumnHidden(MembersModel::kY));
  EXPECT_FALSE(myWindow->txtMessages->isVisible());
  Resize({500, 400});
  EXPECT_FALSE(List().isVisible());
  // Ctrl+F opens it again.
  QTest::keyClick(myWindow->map, Qt::Key_F, Qt::ControlModifier);
  EXPECT_TRUE(Filter().hasFocus());
}

TEST_F(FrameTest, TheCompactViewHasTheMapAloneAndKeysLeadBack) {
  myWindow->actions->actFind->trigger();
  for (const Qt::Key back : {Qt::Key_F11, Qt::Key_Escape}) {
    QTest::keyClick(&*myWindow, Qt::Key_F11);
    QTest::qWait(0);
    EXPECT_EQ(myWindow->map->size(), myWindow->size());
    EXPECT_TRUE(myWindow->map->hasFocus());
    QTest::keyClick(myWindow->map, back);
    EXPECT_TRUE(myWindow->menuBar()->isVisible());
    EXPECT_TRUE(List().isVisible());
  }
}

TEST_F(FrameTest, SaysWhoComesAndGoesAndWhyTheMapIsEmpty) {
  ASSERT_TRUE(Says("Nobody else"));
  auto bob = Member("Bob", "1,2,0,3,0,0");
  EXPECT_TRUE(Shows("Bob came."));
  EXPECT_FALSE(myWindow->barState->isVisible());
  bob.reset();
  EXPECT_TRUE(Shows("Bob left."));
  myWindow->txtMessages->clear();
  for (int i = 0; i < 6; ++i)
    myWindow->Wire().Others().TakeRelay({"m" + std::to_string(i), {}}, client::Clock::now());
  EXPECT_TRUE(Shows("6 members came: m0, m1, m2, m3, m4, ..."));
  TestClient admin(myServer.Port());
  myServer.Query("INSERT INTO admins (name, address, network) VALUES ('Cy','127.0.0.1','North')");
  ASSERT_TRUE(admin.Login("North", "secret", "Cy"));
  admin.Send(10, "Ann|North");
  EXPECT_TRUE(Says("You were kicked"));
  EXPECT_FALSE(Rows().empty()) << "the last positions";
  // Who is there before the user is no news.
  Login(myServer.Port());
  ASSERT_TRUE(RowsAre({"Cy|||||No place"}));
  bob = Member("Bob", "1,2,0,3,0,0");
  EXPECT_TRUE(Shows("Bob came."));
}

TEST_F(FrameTest, AChosenFacetIsFittedOnceAndTheMapHasTheKeys) {
  const auto shows = [&](QPointF place) {
    return PumpUntil([&] { return myWindow->map->viewport()->rect().contains(OnMap(place)); });
  };
  const auto cy = Member("Cy", "9000,9000,0,50,0,0");
  ASSERT_TRUE(shows({9000, 9000}));
  const auto bob = Member("Bob", "5000,6000,3,50,0,0");
  ASSERT_TRUE(PumpUntil([&] { return myWindow->cmbFacet->count() == 2; }));
  myWindow->cmbFacet->setFocus();
  QTest::keyClick(myWindow->cmbFacet, Qt::Key_Down);
  EXPECT_EQ(myWindow->Facet(), 3);
  EXPECT_TRUE(myWindow->map->hasFocus());
  EXPECT_TRUE(shows({5000, 6000}));
}

TEST_F(FrameTest, TheOwnRowFollowsTheOwnReport) {
  const auto own = [&] {
    std::string row;
    for (const int column : {MembersModel::kName, MembersModel::kX, MembersModel::kState})
      row += TextFromDisplay(List().model()->index(0, column).data().toString()) + "|";
    return row;
  };
  EXPECT_TRUE(PumpUntil([&] { return own() == "Ann||No place|"; }));
  Click(myWindow->barOwn->chkSend);
  Click(myWindow->barOwn->chkDead);
  QTest::keyClick(myWindow->map, Qt::Key_Right);
  EXPECT_TRUE(PumpUntil([&] { return own() == "Ann|4|! Dead|"; }));
  QTest::mouseClick(List().viewport(), Qt::LeftButton, {},
                    List().visualRect(List().model()->index(0, 0)).center());
  EXPECT_LT((OnMap({4, 0}) - myWindow->map->viewport()->rect().center()).manhattanLength(), 3);
  myWindow->actions->actDisconnect->trigger();
  EXPECT_TRUE(PumpUntil([&] { return List().model()->rowCount() == 0; }));
}

TEST_F(FrameTest, HelpListsTheKeysOfTheMenus) {
  myWindow->actions->actKeys->trigger();
  const auto* keys = Opened<QDialog>("KeysDialog")->findChild<QTreeWidget*>();
  const auto found = keys->findItems("F11", Qt::MatchExactly);
  ASSERT_EQ(found.size(), 1);
  EXPECT_EQ(found[0]->text(1), "View > Compact View");
}

}  // namespace
}  // namespace corvane::map
