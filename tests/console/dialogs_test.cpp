#include <QLineEdit>
#include <QLocale>
#include <QToolButton>

#include "console/wnd_add_network.h"
#include "console/wnd_edit_network.h"
#include "console/wnd_message.h"
#include "console/wnd_settings.h"
#include "console/wnd_view_admins.h"
#include "console/wnd_view_bans.h"
#include "storage/app_settings.h"
#include "tests/console/console_fixture.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using DialogsTest = ConsoleTest;

// Clicks on the upper or the lower arrow.
void Step(const UpDownArrows& arrows, bool up) {
  Click(arrows.findChildren<QToolButton*>().at(up ? 0 : 1));
}

struct ExpectedStep {
  const char* typed;
  bool up;
  const char* then;
};

// Types each number and steps by the arrow, then again by the key.
void ExpectSteps(QLineEdit& field, const UpDownArrows& arrows,
                 const std::vector<ExpectedStep>& steps) {
  // Keeps the field from being empty, at which it would put a number in itself.
  const auto retype = [&field](const char* text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, text);
  };
  for (const ExpectedStep& step : steps) {
    retype(step.typed);
    Step(arrows, step.up);
    EXPECT_EQ(field.text(), step.then) << step.typed;
    retype(step.typed);
    QTest::keyClick(&field, step.up ? Qt::Key_Up : Qt::Key_Down);
    EXPECT_EQ(field.text(), step.then) << step.typed;
  }
}

TEST_F(DialogsTest, AddedNetworkIsStoredAndAdmitsUsersUnderAnyName) {
  ChooseOn(*myWindow->lstNetworks, -1, "Add Network");
  auto* add = Opened<wndAddNetwork>("wndAddNetwork");
  EXPECT_FALSE(add->chkEnable->isChecked());
  EXPECT_EQ(add->txtUsers->text(), "5");
  Type(add->txtName, "North");
  Click(add->btnCancel);
  ASSERT_TRUE(NoneIsOpen());
  for (const QString name : {"North", "O'Brien"}) {
    ChooseOn(*myWindow->lstNetworks, -1, "Add Network");
    add = Opened<wndAddNetwork>("wndAddNetwork");
    QTest::keyClick(add->chkEnable, Qt::Key_Space);
    Type(add->txtName, name);
    Type(add->txtPass, "s3");
    Click(add->btnOK);
    ASSERT_TRUE(NoneIsOpen());
  }
  EXPECT_THAT(RowTexts(myWindow->Networks()), ElementsAre("North", "So\\nuth", "North", "O'Brien"));
  EXPECT_EQ(Query("SELECT * FROM networks WHERE rowid > 2"), "North|s3|5|1;O'Brien|s3|5|1;");
  TestClient ann(myApp.Listener().Port());
  EXPECT_TRUE(ann.Login("O'Brien", "s3", "Ann"));

  // The edit changes the network; only storing it fails.
  ChooseOn(*myWindow->lstNetworks, 3, "Edit Network");
  auto* edit = Opened<wndEditNetwork>("wndEditNetwork");
  Step(*edit->UpDownArrows1, true);
  Click(edit->btnOK);
  EXPECT_THAT(myBoxes, ElementsAre("near \"Brien\": syntax error"));
  EXPECT_TRUE(NoneIsOpen());
  EXPECT_EQ(myWindow->Networks().NetworkAt(3)->MaxUsers, 6);
  EXPECT_EQ(Query("SELECT users FROM networks WHERE rowid > 2"), "5;5;");
}

TEST_F(DialogsTest, MaxUsersStayFromOneToAThousand) {
  ChooseOn(*myWindow->lstNetworks, -1, "Add Network");
  auto* add = Opened<wndAddNetwork>("wndAddNetwork");
  ExpectSteps(*add->txtUsers, *add->UpDownArrows1,
              {{"5", true, "6"}, {"5", false, "4"}, {"0", false, "1"}, {"5000", true, "1000"}});
  // The number that replaces an empty field is selected, so typing replaces it.
  Type(add->txtUsers, "20");
  EXPECT_EQ(add->txtUsers->text(), "20");
  Type(add->txtUsers, "9999");
  Click(add->btnOK);
  EXPECT_EQ(Query("SELECT * FROM networks WHERE rowid > 2"), "||1000|0;");
}

TEST_F(DialogsTest, EditedNetworkKeepsItsName) {
  ChooseOn(*myWindow->lstNetworks, 1, "Edit Network");
  auto* edit = Opened<wndEditNetwork>("wndEditNetwork");
  EXPECT_TRUE(edit->chkEnable->isChecked());
  EXPECT_EQ(edit->txtPass->text(), "secret");
  EXPECT_EQ(edit->txtUsers->text(), "5");
  const auto south = myWindow->Networks().NetworkAt(1);
  QTest::keyClick(edit->chkEnable, Qt::Key_Space);
  Type(edit->txtName, "West");
  Type(edit->txtPass, "other");
  Step(*edit->UpDownArrows1, true);
  Click(edit->btnOK);
  ASSERT_TRUE(NoneIsOpen());
  EXPECT_EQ(Query("SELECT * FROM networks"), "North|secret|5|1;So\nuth|other|6|0;");
  EXPECT_EQ(south->NetworkName, "So\nuth");
  EXPECT_EQ(south->Password, "other");
  EXPECT_EQ(south->MaxUsers, 6);
  EXPECT_FALSE(south->Enabled);
  // The field shows other bytes.
  south->Password = "\xFF";
  ChooseOn(*myWindow->lstNetworks, 1, "Edit Network");
  Click(Opened<wndEditNetwork>("wndEditNetwork")->btnOK);
  EXPECT_EQ(south->Password, "\xFF");
  EXPECT_THAT(myBoxes, IsEmpty());
}

TEST_F(DialogsTest, MessageReachesTheChosenNetworks) {
  const auto ann = LoggedIn("Ann");
  const auto ben = LoggedIn("Ben", "So\nuth");
  const auto send = [&](int row, const QString& text) {
    ChooseInMenuBar("&File", "Send Message");
    auto* message = Opened<wndMessage>("wndMessage");
    EXPECT_THAT(RowTexts(*message->pmNetwork->model()),
                ElementsAre("(All Networks)", "North", "So\\nuth"));
    for (int i = 0; i < row; ++i)
      QTest::keyClick(message->pmNetwork, Qt::Key_Down);
    Type(message->fldText, text);
    Click(message->btnSend);
    EXPECT_TRUE(NoneIsOpen());
  };
  int notes = 0;
  auto noted = myApp.Log().Written.Connect([&](const std::string&) { ++notes; });
  send(0, "");
  send(0, "to all");
  send(2, "to the south");
  send(1, "to the north");
  noted = {};
  EXPECT_EQ(notes, 3);
  EXPECT_THAT(ann->Drain(),
              ElementsAre(WireMessage{998, "to all"}, WireMessage{998, "to the north"}));
  EXPECT_THAT(ben->Drain(),
              ElementsAre(WireMessage{998, "to all"}, WireMessage{998, "to the south"}));
}

TEST_F(DialogsTest, SettingsAreCheckedInOrderAndStored) {
  const std::vector<NetworkInterface> interfaces = {{"00:1A:2B:3C:4D:5E", "192.0.2.1"},
                                                    {"00:1A:2B:3C:4D:5F", "192.0.2.2"}};
  const auto open = [&] {
    auto* settings = new wndSettings(myApp.Op(), interfaces, *myWindow);
    settings->open();
    return settings;
  };
  const auto stored = [&] {
    AppSettings file(myFolder.path());
    file.Load();
    return file.GetValue("AttachedNIC", "?") + " " + file.GetValue("AttachedPort", "?") + " " +
           file.GetValue("MaxConns", "?");
  };
  auto* settings = open();
  EXPECT_EQ(settings->pmNIC->currentIndex(), -1);
  EXPECT_EQ(settings->fldConns->text(), "100");
  EXPECT_EQ(settings->fldPort->text(), "0");
  Type(settings->fldConns, "1");
  const std::string before = stored();
  Click(settings->btnOK);
  settings->pmNIC->setFocus();
  QTest::keyClick(settings->pmNIC, Qt::Key_End);
  for (const QString port : {"", "9999", "10000"}) {
    Type(settings->fldPort, port);
    Click(settings->btnOK);
  }
  Type(settings->fldConns, "");
  QTest::keyClick(settings->fldConns, Qt::Key_Return);
  const std::string noPort = "You must select a valid port number greater than or equal to 10000.";
  const std::string fewConnections = "You must select no fewer than 2 maximum connections.";
  EXPECT_THAT(myBoxes, ElementsAre("You must select a valid network interface.", noPort, noPort,
                                   fewConnections, fewConnections));
  EXPECT_TRUE(settings->isVisible());
  EXPECT_EQ(stored(), before);
  Type(settings->fldPort, "99999");
  Type(settings->fldConns, "002");
  QTest::keyClick(settings->fldConns, Qt::Key_Return);
  ASSERT_TRUE(NoneIsOpen());
  EXPECT_EQ(stored(), "00:1A:2B:3C:4D:5F 65535 002");

  myApp.Settings().SetValue("AttachedNIC", "00:1a:2b:3c:4d:5f");
  settings = open();
  EXPECT_EQ(settings->pmNIC->currentIndex(), 1);
  Type(settings->fldPort, "12000");
  Click(settings->btnCancel);
  ASSERT_TRUE(NoneIsOpen());
  EXPECT_EQ(stored(), "00:1a:2b:3c:4d:5f 65535 002");

  QDir data(myFolder.path());
  EXPECT_TRUE(data.remove("Corvane Server.xml") && data.mkdir("Corvane Server.xml"));
  settings = open();
  Click(settings->btnOK);
  EXPECT_THAT(myBoxes.back(), testing::StartsWith("The settings were not saved:\n"));
  EXPECT_TRUE(settings->isVisible());
}

TEST_F(DialogsTest, ConnectionsStepDownFromOneToTwo) {
  ChooseInMenuBar("&File", "Settings...");
  auto* settings = Opened<wndSettings>("wndSettings");
  ExpectSteps(
      *settings->fldConns, *settings->udConns,
      {{"2", false, "1"}, {"1", false, "2"}, {"9998", true, "9999"}, {"9999", true, "9999"}});
}

TEST_F(DialogsTest, TabVisitsTheControlsInOrder) {
  const auto expectOrder = [](QDialog* dialog, const std::vector<QWidget*>& controls) {
    for (QWidget* control : controls) {
      EXPECT_EQ(dialog->focusWidget(), control) << dialog->objectName().toStdString();
      QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(dialog->focusWidget(), controls.front());
    dialog->reject();
  };
  ChooseOn(*myWindow->lstNetworks, -1, "Add Network");
  auto* add = Opened<wndAddNetwork>("wndAddNetwork");
  expectOrder(
      add, {add->chkEnable, add->txtName, add->txtUsers, add->txtPass, add->btnOK, add->btnCancel});
  ChooseInMenuBar("&File", "Settings...");
  auto* settings = Opened<wndSettings>("wndSettings");
  expectOrder(settings, {settings->pmNIC, settings->fldConns, settings->fldPort, settings->btnOK,
                         settings->btnCancel});
  ChooseInMenuBar("&File", "Send Message");
  auto* message = Opened<wndMessage>("wndMessage");
  expectOrder(message, {message->pmNetwork, message->fldText, message->btnSend});
}

TEST_F(DialogsTest, SelectedRecordsAreDeleted) {
  Query(
      "INSERT INTO bans (address, \"by\", reason, bandate, network) VALUES "
      "('192.0.2.1','Ann','a','2011-03-07 09:05:02','North'), ('192.0.2.2','Ann','b','','North'),"
      "('192.0.2.3','Ann',hex(zeroblob(300)),'','North');"
      "INSERT INTO admins (name, address, network) VALUES ('Ann','192.0.2.1','North'),"
      "('Ben','192.0.2.2','North'), ('Cid','192.0.2.3','North')");
  const QLocale before;
  QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  Click(myWindow->btnBans);
  QLocale::setDefault(before);
  auto* bans = Opened<wndViewBans>("wndViewBans");
  EXPECT_THAT(RowTexts(*bans->lstBans->model()),
              ElementsAre("192.0.2.1|Ann|a|07.03.11 09:05", "192.0.2.2|Ann|b|",
                          "192.0.2.3|Ann|" + std::string(600, '0') + "|"));
  // Only the one long text is cut off.
  for (const int column : {0, 1, 3}) {
    const QModelIndex cell = bans->lstBans->model()->index(0, column);
    EXPECT_GE(bans->lstBans->columnWidth(column), bans->lstBans->sizeHintForIndex(cell).width());
  }
  EXPECT_FALSE(bans->btnDel->isEnabled());
  ClickRow(*bans->lstBans, 1);
  ClickRow(*bans->lstBans, 0, Qt::ControlModifier);
  Click(bans->btnDel);
  EXPECT_THAT(RowTexts(*bans->lstBans->model()), ElementsAre(testing::StartsWith("192.0.2.3|")));
  EXPECT_EQ(Query("SELECT address FROM bans"), "192.0.2.3;");
  EXPECT_FALSE(bans->btnDel->isEnabled());
  bans->close();

  Click(myWindow->btnAdmins);
  auto* admins = Opened<wndViewAdmins>("wndViewAdmins");
  // After a deletion nothing is selected, and a step selects the row with the frame.
  for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Delete, Qt::Key_Down, Qt::Key_End, Qt::Key_Home,
                            Qt::Key_End, Qt::Key_Delete})
    QTest::keyClick(admins->lstAdmins, key);
  EXPECT_THAT(RowTexts(*admins->lstAdmins->model()), ElementsAre("Ben|North|192.0.2.2"));
  EXPECT_EQ(Query("SELECT name FROM admins"), "Ben;");
}

TEST_F(DialogsTest, LongReasonsCutOffNoAddressInALongList) {
  Query(
      "WITH RECURSIVE numbers (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM numbers WHERE i < 3000) "
      "INSERT INTO bans (address, \"by\", reason, network) SELECT '10.0.' || (i / 256) "
      "|| '.' || (i % 256), 'Ann', hex(zeroblob(300)), 'North' FROM numbers");
  Click(myWindow->btnBans);
  const ListBox& bans = *Opened<wndViewBans>("wndViewBans")->lstBans;
  const QModelIndex last = bans.model()->index(2999, 0);
  EXPECT_GE(bans.columnWidth(0), bans.sizeHintForIndex(last).width());
}

}  // namespace
}  // namespace corvane
