

#include "console/reason_dialog.h"
#include "console/wnd_conn_info.h"
#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ContextMenusTest = ConsoleTest;

TEST_F(ContextMenusTest, OfferTheActionsOfTheSelection) {
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

TEST_F(ContextMenusTest, NetworkIsDisconnectedAndDeletedOnceConfirmed) {
  const auto ann = LoggedIn("Ann");
  const auto ben = LoggedIn("Ben", "So\nuth");
  ChooseOn(*myWindow->lstNetworks, 1, "Disconnect All");
  EXPECT_EQ(ben->Receive(), (WireMessage{999, "BYE"}));
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
  EXPECT_EQ(myApp.Listener().FindNetwork("North"), nullptr);
  EXPECT_THAT(ben->Drain(), IsEmpty());
}

TEST_F(ContextMenusTest, MnemonicsInsertedByTheDesktopChangeNothing) {
  const auto ann = LoggedIn("Ann");
  OpenContextMenu(*myWindow->lstUsers, 0);
  for (QAction* item : OpenedMenu()->actions())
    item->setText("&" + item->text());
  Choose("&Make Admin");
  EXPECT_EQ(Query("SELECT name FROM admins"), "Ann;");
}

TEST_F(ContextMenusTest, KickAndBanNeedAReason) {
  for (const std::string name : {"*", "<b>Ben\n</b>"}) {
    const auto user = LoggedIn(name);
    const std::string shown = name == "*" ? name : "<b>Ben\\n</b>";
    const auto open = [&](const QString& what) {
      ChooseOn(*myWindow->lstUsers, 0, what + " User");
      auto* dialog = Opened<ReasonDialog>(what == "Kick" ? "wndKick" : "wndBan");
      EXPECT_EQ(dialog->windowHandle()->title(),
                what + " User [" + QString::fromStdString(shown) + "]");
      return dialog;
    };
    for (const QString what : {"Kick", "Ban"}) {
      ReasonDialog* dialog = open(what);
      Click(dialog->btnOK);
      EXPECT_TRUE(dialog->isVisible());
      Type(dialog->txtReason, "cancelled");
      what == "Kick" ? Click(dialog->btnCancel)
                     : QTest::keyClick(dialog->txtReason, Qt::Key_Escape);
      ASSERT_TRUE(NoneIsOpen());
    }
    EXPECT_THAT(user->Drain(), IsEmpty());
    // Enter kicks, but does not ban.
    ReasonDialog* ban = open("Ban");
    Type(ban->txtReason, "too loud");
    QTest::keyClick(ban->txtReason, Qt::Key_Return);
    EXPECT_TRUE(ban->isVisible());
    Click(ban->btnCancel);
    ASSERT_TRUE(NoneIsOpen());
    ReasonDialog* kick = open("Kick");
    Type(kick->txtReason, "too loud");
    QTest::keyClick(kick->txtReason, Qt::Key_Return);
    EXPECT_TRUE(NoneIsOpen());
    EXPECT_THAT(user->Drain(), ElementsAre(WireMessage{996, "too loud"}));
    EXPECT_TRUE(Shows(shown + " Kicked: too loud"));
    EXPECT_EQ(Query("SELECT * FROM bans"), "");
    user->Close();
    ASSERT_TRUE(PumpUntil([&] { return Users().empty(); }));
  }
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
    EXPECT_EQ(info->lblInfo->textInteractionFlags(), Qt::TextSelectableByMouse);
    QTest::keyClick(info, key);
    EXPECT_TRUE(NoneIsOpen());
  }
}

// The user may have left since the menu opened.
TEST_F(ContextMenusTest, ChoiceAppliesToTheUserSelectedWhenTheMenuOpened) {
  const auto ben = LoggedIn("Ben");
  const struct {
    QString choice;
    const char* dialog;  // that asks for a reason
    const char* line;    // in the status log
    std::vector<WireMessage> heard;
    const char* stored;
  } cases[] = {
      {"Kick User", "wndKick", "Ann Kicked: it's over", {{996, "it's over"}}, ""},
      {"Ban User",
       "wndBan",
       "Ann Banned: it's over",
       {{997, "it's over"}},
       "127.0.0.2|Server Admin|it's over|So\nuth;"},
      {"Force Disconnect", nullptr, "Admin Force Kicked Ann", {}, ""},
      {"Make Admin", nullptr, nullptr, {}, "Ann|127.0.0.2|So\nuth;"},
  };
  for (const auto& row : cases) {
    for (const bool leaves : {false, true}) {
      SCOPED_TRACE(row.choice.toStdString() + (leaves ? ", left" : ""));
      const auto ann = LoggedIn("Ann", "So\nuth", "127.0.0.2");
      const auto isGone = [this] { return Users().size() == 1; };
      myWindow->Status().Clear();
      OpenContextMenu(*myWindow->lstUsers, 1);
      if (leaves) {
        ann->Close();
        ASSERT_TRUE(PumpUntil(isGone));
        EXPECT_EQ(myWindow->lstUsers->SelectedRow(), -1);
      }
      Choose(row.choice);
      if (row.dialog != nullptr) {
        auto* dialog = Opened<ReasonDialog>(row.dialog);
        EXPECT_EQ(dialog->windowTitle(), row.choice + " [Ann]");
        Type(dialog->txtReason, "it's over");
        Click(dialog->btnOK);
        ASSERT_TRUE(NoneIsOpen());
      }
      EXPECT_TRUE(row.line == nullptr || Shows(row.line));
      if (!leaves) {
        EXPECT_EQ(ann->Drain(), row.heard);
      }
      EXPECT_EQ(ann->IsClosed(), leaves || row.choice == "Force Disconnect");
      EXPECT_EQ(Query("SELECT address, \"by\", reason, network FROM bans;"
                      "SELECT name, address, network FROM admins"),
                row.stored);
      Query("DELETE FROM bans; DELETE FROM admins");
      ann->Close();
      ASSERT_TRUE(PumpUntil(isGone));
    }
  }
  EXPECT_THAT(ben->Drain(), IsEmpty());
  OpenContextMenu(*myWindow->lstUsers, 0);
  ben->Close();
  ASSERT_TRUE(PumpUntil([this] { return Users().empty(); }));
  Choose("Connection Info");
  EXPECT_TRUE(IsOpen("wndConnInfo"));
}

}  // namespace
}  // namespace corvane
