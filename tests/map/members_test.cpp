#include <QApplication>
#include <QMenu>
#include <QMessageBox>

#include "map/text_dialog.h"
#include "tests/map/map_fixture.h"

namespace corvane::map {
namespace {

class MembersTest : public MapTest {
 protected:
  QTableView* List() { return myWindow->pnlMembers->lstMembers; }
};

TEST_F(MembersTest, AreListedSortedAndFiltered) {
  const auto bob = Member("bob", "10,20,0,50,0,0");
  const auto cy = Member("Cy", "9,20,1,7,1,0");
  const auto amy = Member("Amy\n\xE2\x80\xAE\xE2\x80\x8B", "100,20,0,8,0,1");
  const std::string amyRow = "Amy\\n\\u202e\\u200b|100|20|0|8|Dead";
  EXPECT_TRUE(RowsAre({amyRow, "bob|10|20|0|50|Alive", "Cy|9|20|1|7|In battle"}));
  List()->sortByColumn(MembersModel::kX, Qt::AscendingOrder);
  EXPECT_TRUE(RowsAre({"Cy|9|20|1|7|In battle", "bob|10|20|0|50|Alive", amyRow}));
  bob->Send(4, "-10,20,0,50,0,0");
  EXPECT_TRUE(RowsAre({"bob|-10|20|0|50|Alive", "Cy|9|20|1|7|In battle", amyRow}));
  Type(myWindow->pnlMembers->fldFilter, "Y");
  EXPECT_TRUE(RowsAre({"Cy|9|20|1|7|In battle", amyRow}));
  Type(myWindow->pnlMembers->fldFilter, "nobody");
  EXPECT_TRUE(RowsAre({}));
}

TEST_F(MembersTest, AClickCentresAndADoubleClickFollows) {
  auto bob = Member("Bob", "1000,1000,0,50,0,0");
  const auto cy = Member("Cy", "5000,3000,2,50,0,0");
  ASSERT_TRUE(PumpUntil([&] { return Rows().size() == 2; }));
  const auto middle = [&] {
    return myWindow->map->mapToScene(myWindow->map->viewport()->rect().center());
  };
  List()->setFocus();
  EXPECT_FALSE(List()->currentIndex().isValid()) << "the keyboard alone selects nobody";
  QTest::keyClick(List(), Qt::Key_Down);
  EXPECT_EQ(myWindow->Shown().selected, nullptr) << "the user's own row";
  QTest::keyClick(List(), Qt::Key_C);
  EXPECT_EQ(myWindow->Shown().selected, nullptr) << "letters do not search";
  QTest::keyClick(List(), Qt::Key_Down);
  EXPECT_EQ(myWindow->Shown().selected, Find("Bob"));
  EXPECT_TRUE(List()->selectionModel()->isRowSelected(1));
  QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, CellAt(1));
  EXPECT_LT((middle() - QPointF(5000, 3000)).manhattanLength(), 5);
  EXPECT_EQ(myWindow->Facet(), 2);
  EXPECT_FALSE(myWindow->map->IsFollowing());
  for (const bool byKey : {false, true}) {
    byKey ? QTest::keyClick(List(), Qt::Key_F10, Qt::ShiftModifier)
          : Q_EMIT List()->customContextMenuRequested(CellAt(1));
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    QApplication::activePopupWidget()->close();
  }
  for (const Qt::Key key : {Qt::Key_F, Qt::Key_Escape}) {
    QTest::keyClick(List(), key);
    EXPECT_EQ(myWindow->map->IsFollowing(), key == Qt::Key_F);
    EXPECT_EQ(myWindow->actions->actFollow->isChecked(), key == Qt::Key_F);
  }
  QTest::mouseDClick(List()->viewport(), Qt::LeftButton, {}, CellAt(1));
  EXPECT_TRUE(myWindow->map->IsFollowing());
  // The same with keys.
  List()->setFocus();
  QTest::keyClick(List(), Qt::Key_Up);
  EXPECT_FALSE(myWindow->map->IsFollowing());
  EXPECT_LT((middle() - QPointF(1000, 1000)).manhattanLength(), 5);
  QTest::keyClick(List(), Qt::Key_Return);
  EXPECT_EQ(myWindow->Shown().followed, Find("Bob"));
  // After a click on the map the list reports the next selection.
  QTest::mouseClick(myWindow->map->viewport(), Qt::LeftButton, {}, OnMap({1000, 1000}));
  QTest::keyClick(List(), Qt::Key_Down);
  EXPECT_EQ(myWindow->Shown().selected, Find("Cy"));
  QTest::keyClick(List(), Qt::Key_Up);
  // When the member leaves, no neighbour is selected.
  bob.reset();
  ASSERT_TRUE(PumpUntil([&] { return Rows().size() == 1; }));
  EXPECT_FALSE(List()->currentIndex().isValid());
  EXPECT_FALSE(myWindow->actions->actKick->isEnabled());
  // Its return brings the selection back.
  bob = Member("BOB", "1,1,0,50,0,0");
  EXPECT_TRUE(PumpUntil([&] { return myWindow->actions->actKick->isEnabled(); }));
  EXPECT_EQ(myWindow->Shown().selected, Find("Bob"));
  EXPECT_EQ(List()->currentIndex().data().toString(), "BOB");
}

TEST_F(MembersTest, AnAdministratorKicksBansAndSendsMessages) {
  const auto bob = Member("Bob", "10,20,0,50,0,0");
  ASSERT_TRUE(PumpUntil([&] { return Rows().size() == 1; }));
  bob->Drain();
  EXPECT_TRUE(myWindow->actions->mnuAdministration->menuAction()->isVisible());
  // The answer arrives after the dialog has closed.
  myWindow->actions->actBans->trigger();
  myWindow->findChild<QDialog*>("BansDialog")->reject();
  QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, CellAt(0));
  for (const auto& [key, modifier] :
       {std::pair(Qt::Key_Return, Qt::NoModifier), std::pair(Qt::Key_K, Qt::AltModifier)}) {
    myWindow->actions->actKick->trigger();
    auto* question = Opened<QMessageBox>("KickQuestion");
    EXPECT_TRUE(question->text().contains("Bob"));
    QTest::keyClick(question, key, modifier);
    EXPECT_TRUE(PumpUntil([&] { return !IsOpen("KickQuestion"); }));
    EXPECT_EQ(bob->HearsNothing(), key == Qt::Key_Return);
  }
  EXPECT_EQ(bob->Receive(), (WireMessage{996, "North"}));

  myWindow->actions->actMessage->trigger();
  auto* message = Opened<TextDialog>("TextDialog");
  EXPECT_FALSE(message->btnOK->isEnabled());
  Type(message->txtText, "Hello");
  Click(message->btnOK);
  EXPECT_EQ(bob->Receive(), (WireMessage{998, "Hello"}));
  EXPECT_TRUE(Shows("Message: Hello"));

  myWindow->actions->actBan->trigger();
  auto* ban = Opened<TextDialog>("TextDialog");
  Type(ban->txtText, "spam");
  QTest::keyClick(ban->txtText, Qt::Key_Return);
  EXPECT_EQ(bob->Receive(), (WireMessage{997, "spam"}));

  myServer.Query("INSERT INTO bans (address) VALUES ('192.0.2.7')");
  myWindow->actions->actBans->trigger();
  auto* bans = Opened<BansDialog>("BansDialog");
  const auto comeToBe = [&](int count) {
    return PumpUntil([&] { return bans->lstBans->topLevelItemCount() == count; });
  };
  ASSERT_TRUE(comeToBe(2));
  for (const auto& [column, text] : {std::pair(0, "127.0.0.1"), {1, "Ann"}, {2, "spam"}})
    EXPECT_EQ(bans->lstBans->topLevelItem(0)->text(column), text);
  QTest::keyClick(bans->lstBans, Qt::Key_Down);
  Click(bans->btnLift);
  ASSERT_TRUE(comeToBe(1));
  EXPECT_FALSE(bans->btnLift->isEnabled()) << "the other is not selected";
  bans->lstBans->setFocus();
  QTest::keyClick(bans->lstBans, Qt::Key_Down);
  Click(bans->btnLift);
  EXPECT_TRUE(comeToBe(0));
  EXPECT_EQ(myServer.Query("SELECT count(*) FROM bans"), "0;");
}

// The commands cannot name such a user: they would hit another.
TEST_F(MembersTest, AUserWithABarInItsNameIsNotKickedOrBanned) {
  const auto bob = Member("Bob", "10,20,0,50,0,0");
  const auto odd = Member("Bob|x", "10,20,0,50,0,0");
  ASSERT_TRUE(PumpUntil([&] { return Rows().size() == 2; }));
  bob->Drain();
  QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, CellAt(1));
  myWindow->actions->actKick->trigger();
  EXPECT_TRUE(Shows("Bob|x cannot be named"));
  myWindow->actions->actBan->trigger();
  EXPECT_FALSE(IsOpen("TextDialog"));
  EXPECT_TRUE(bob->HearsNothing());
}

}  // namespace
}  // namespace corvane::map
