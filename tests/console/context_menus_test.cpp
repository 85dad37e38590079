
#include <QApplication>

#include "console/wnd_ban.h"
#include "console/wnd_conn_info.h"
#include "console/wnd_kick.h"
#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ContextMenusTest = ConsoleTest;

TEST_F(ContextMenusTest, HoldWhatCanBeDoneToTheSelection) {
  OpenContextMenu(*myWindow->lstNetworks, -1);
  EXPECT_THAT(Captions(), ElementsAre("Add Network", "-", "Edit Network?", "Delete Network?", "-",
                                      "Disconnect All?"));
  Choose("Delete Network");
  EXPECT_THAT(myBoxes, IsEmpty());
  OpenedMenu()->close();
  OpenContextMenu(*myWindow->lstNetworks, 1);
  EXPECT_THAT(Captions(), ElementsAre("Add Network", "-", "Edit Network", "Delete Network", "-",
                                      "Disconnect All"));
  OpenedMenu()->close();

  const auto ann = LoggedIn("Ann");
  OpenContextMenu(*myWindow->lstUsers, -1);
  EXPECT_EQ(OpenedMenu(), nullptr);
  ClickRow(*myWindow->lstUsers, 0);
  OpenContextMenu(*myWindow->lstUsers, -1);
  EXPECT_THAT(Captions(), ElementsAre("Connection Info", "-", "Kick User", "Ban User", "-",
                                      "Force Disconnect", "-", "Make Admin"));
}

TEST_F(ContextMenusTest, DeletedNetworkSendsItsUsersAwayOnceConfirmed) {
  const auto ann = LoggedIn("Ann");
  const auto ben = LoggedIn("Ben", "So\nuth");
  myAnswer = MessageBox::Answer::No;
  ChooseOn(*myWindow->lstNetworks, 0, "Delete Network");
  EXPECT_THAT(myBoxes,
              ElementsAre("Delete Network? Are you sure you wish to delete this network?"));
  EXPECT_TRUE(ann->HearsNothing());
  EXPECT_EQ(Query("SELECT name FROM networks"), "North;So\nuth;");
  EXPECT_THAT(RowTexts(myWindow->Networks()), ElementsAre("North", "So\\nuth"));

  myAnswer = MessageBox::Answer::Yes;
  ChooseOn(*myWindow->lstNetworks, 0, "Delete Network");
  EXPECT_EQ(ann->Receive(), (WireMessage{998, "This network has been removed from the server."}));
  EXPECT_EQ(ann->Receive(), (WireMessage{999, "BYE"}));
  EXPECT_EQ(Query("SELECT name FROM networks"), "So\nuth;");
  EXPECT_THAT(RowTexts(myWindow->Networks()), ElementsAre("So\\nuth"));
  EXPECT_EQ(myWindow->sSocket->FindNetwork("North"), nullptr);
  EXPECT_THAT(ben->Drain(), IsEmpty());
}

TEST_F(ContextMenusTest, DisconnectedNetworkStays) {
  const auto ann = LoggedIn("Ann");
  const auto ben = LoggedIn("Ben", "So\nuth");
  ChooseOn(*myWindow->lstNetworks, 1, "Disconnect All");
  EXPECT_EQ(ben->Receive(), (WireMessage{999, "BYE"}));
  EXPECT_THAT(ann->Drain(), IsEmpty());
  EXPECT_EQ(Query("SELECT name FROM networks"), "North;So\nuth;");
  EXPECT_THAT(RowTexts(myWindow->Networks()), ElementsAre("North", "So\\nuth"));
}

TEST_F(ContextMenusTest, ForcedDisconnectTellsTheUserNothing) {
  const auto ann = LoggedIn("Ann");
  ChooseOn(*myWindow->lstUsers, 0, "Force Disconnect");
  EXPECT_TRUE(Shows("Admin Force Kicked Ann"));
  EXPECT_EQ(ann->Receive(), std::nullopt);
  EXPECT_TRUE(ann->WasClosedByServer());
  EXPECT_THAT(Users(), IsEmpty());
}

TEST_F(ContextMenusTest, UserIsMadeAdministratorAsOftenAsAsked) {
  const auto ann = LoggedIn("Ann", "So\nuth", "127.0.0.2");
  ChooseOn(*myWindow->lstUsers, 0, "Make Admin");
  OpenContextMenu(*myWindow->lstUsers, 0);
  // Some desktops put mnemonics into the captions of an open menu.
  for (QAction* item : OpenedMenu()->actions())
    item->setText("&" + item->text());
  Choose("&Make Admin");
  EXPECT_EQ(Query("SELECT name, address, network FROM admins"),
            "Ann|127.0.0.2|So\nuth;Ann|127.0.0.2|So\nuth;");
}

TEST_F(ContextMenusTest, KickNeedsAReasonAndTellsTheUser) {
  for (const std::string name : {"Ann", "*", "<b>Ben\n</b>"}) {
    const auto user = LoggedIn(name);
    ChooseOn(*myWindow->lstUsers, 0, "Kick User");
    auto* kick = Opened<wndKick>("wndKick");
    Type(kick->txtReason, "cancelled");
    Click(kick->btnCancel);
    ASSERT_TRUE(NoneIsOpen());
    ChooseOn(*myWindow->lstUsers, 0, "Kick User");
    kick = Opened<wndKick>("wndKick");
    const std::string shown = name == "<b>Ben\n</b>" ? "<b>Ben\\n</b>" : name;
    EXPECT_EQ(kick->windowHandle()->title().toStdString(), "Kick User [" + shown + "]");
    Click(kick->btnOK);
    EXPECT_TRUE(kick->isVisible());
    Type(kick->txtReason, "too loud");
    QTest::keyClick(kick->txtReason, Qt::Key_Return);
    EXPECT_EQ(user->Receive(), (WireMessage{996, "too loud"}));
    EXPECT_TRUE(Shows(shown + " Kicked: too loud"));
    EXPECT_TRUE(NoneIsOpen());
    EXPECT_FALSE(user->IsClosed());
    user->Close();
    ASSERT_TRUE(PumpUntil([&] { return Users().empty(); }));
  }
}

TEST_F(ContextMenusTest, BanTellsTheUserAndIsStored) {
  const auto ann = LoggedIn("Ann", "So\nuth", "127.0.0.2");
  ChooseOn(*myWindow->lstUsers, 0, "Ban User");
  auto* ban = Opened<wndBan>("wndBan");
  Type(ban->txtReason, "cancelled");
  QTest::keyClick(ban->txtReason, Qt::Key_Escape);
  ASSERT_TRUE(NoneIsOpen());
  ChooseOn(*myWindow->lstUsers, 0, "Ban User");
  ban = Opened<wndBan>("wndBan");
  EXPECT_EQ(ban->windowTitle(), "Ban User [Ann]");
  Click(ban->btnOK);
  Type(ban->txtReason, "it's over");
  QTest::keyClick(ban->txtReason, Qt::Key_Return);
  EXPECT_TRUE(ban->isVisible());
  EXPECT_EQ(Query("SELECT * FROM bans"), "");
  Click(ban->btnOK);
  EXPECT_EQ(ann->Receive(), (WireMessage{997, "it's over"}));
  EXPECT_TRUE(Shows("Ann Banned: it's over"));
  EXPECT_EQ(Query("SELECT address, \"by\", reason, network FROM bans"),
            "127.0.0.2|Server Admin|it's over|So\nuth;");
  EXPECT_TRUE(NoneIsOpen());
}

TEST_F(ContextMenusTest, ConnectionInfoShowsWhereTheUserIs) {
  myWebServer.answers["/IpLocator.htm?GetLocation&template=php3.txt&IpAddress=127.0.0.1"] = {
      OkReply(
          "<html>\n<meta name=\"country\" content=\"Norway\">\n"
          "<meta name=\"regioncode\" content=\"NO-03\">\n"
          "<meta name=\"city\" content=\"<b>Oslo\">\n"
          "<meta name=\"cityid\" content=\"1234\">\n<meta name=\"timezone\" content=\"+1\">\n")};
  myApp.Locations().SetServices(myWebServer.Address(), "");
  const auto ann = LoggedIn("Ann");
  for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
    ChooseOn(*myWindow->lstUsers, 0, "Connection Info");
    auto* info = Opened<wndConnInfo>("wndConnInfo");
    EXPECT_EQ(info->lblInfo->text(), "<b>Oslo, NO-03 01234\nNorway\nGMT +1");
    EXPECT_EQ(info->lblInfo->textFormat(), Qt::PlainText);
    QTest::keyClick(info, key);
    EXPECT_TRUE(NoneIsOpen());
  }
}

// The operator's choice stays with the user that was selected when the menu opened.
TEST_F(ContextMenusTest, UserWhoLeavesMeanwhileIsStillTheOneActedOn) {
  auto ann = LoggedIn("Ann");
  const auto ben = LoggedIn("Ben");
  const auto annLeaves = [&] {
    ann->Close();
    return PumpUntil([&] { return Users().size() == 1; });
  };
  OpenContextMenu(*myWindow->lstUsers, 0);
  ASSERT_TRUE(annLeaves());
  EXPECT_EQ(myWindow->lstUsers->SelectedRow(), -1);
  Choose("Kick User");
  auto* kick = Opened<wndKick>("wndKick");
  EXPECT_EQ(kick->windowTitle(), "Kick User [Ann]");
  Type(kick->txtReason, "late");
  Click(kick->btnOK);
  EXPECT_TRUE(Shows("Ann Kicked: late"));
  ASSERT_TRUE(NoneIsOpen());

  ann = LoggedIn("Ann", "So\nuth");
  ChooseOn(*myWindow->lstUsers, 1, "Ban User");
  ASSERT_TRUE(annLeaves());
  auto* ban = Opened<wndBan>("wndBan");
  Type(ban->txtReason, "later");
  Click(ban->btnOK);
  EXPECT_EQ(Query("SELECT address, reason, network FROM bans"), "127.0.0.1|later|So\nuth;");
  Query("DELETE FROM bans");
  EXPECT_TRUE(NoneIsOpen());

  for (const QString choice : {"Force Disconnect", "Make Admin", "Connection Info"}) {
    ann = LoggedIn("Ann");
    OpenContextMenu(*myWindow->lstUsers, 1);
    ASSERT_TRUE(annLeaves());
    Choose(choice);
  }
  EXPECT_TRUE(Shows("Admin Force Kicked Ann"));
  EXPECT_EQ(Query("SELECT name, address, network FROM admins"), "Ann|127.0.0.1|North;");
  // Ben heard that Ann left four times, and of nothing else that was done to her.
  for (const WireMessage& message : ben->Drain())
    EXPECT_EQ(message, (WireMessage{6, "Ann"}));
  EXPECT_THAT(Users(), ElementsAre("Ben|North"));
}

}  // namespace
}  // namespace corvane
