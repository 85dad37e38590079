#include <exception>
#include <gmock/gmock.h>
#include <string>
#include <vector>

#include <QApplication>
#include <QLocale>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>

#include "console/application.h"
#include "console/wnd_add_network.h"
#include "console/wnd_edit_network.h"
#include "console/wnd_message.h"
#include "console/wnd_settings.h"
#include "console/wnd_view_admins.h"
#include "console/wnd_view_bans.h"
#include "storage/app_settings.h"
#include "tests/console/console_fixture.h"
#include "tests/support/leak_counting.h"

using namespace corvane;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using DialogsTest = ConsoleTest;

// Clicks on the upper or the lower arrow.
void Step(const UpDownArrows& arrows, bool up) {
  Click(arrows.findChildren<QToolButton*>().at(up ? 0 : 1));
}

}  // namespace

TEST_F(DialogsTest, AddedNetworkIsStoredAndLetsUsersIn) {
  ChooseOn(*myWindow->lstNetworks, -1, "Add Network");
  auto* add = Opened<wndAddNetwork>("wndAddNetwork");
  ASSERT_NE(add, nullptr);
  EXPECT_FALSE(add->chkEnable->isChecked());
  EXPECT_EQ(add->txtUsers->text(), "5");
  Type(add->txtName, "North");
  Click(add->btnCancel);
  ASSERT_TRUE(NoneIsOpen());
  EXPECT_EQ(myWindow->Networks().rowCount(), 2);
  EXPECT_EQ(Query("SELECT name FROM networks"), "North;So\nuth;");

  for (const QString name : {"North", "O'Brien"}) {
    ChooseOn(*myWindow->lstNetworks, -1, "Add Network");
    add = Opened<wndAddNetwork>("wndAddNetwork");
    ASSERT_NE(add, nullptr);
    QTest::keyClick(add->chkEnable, Qt::Key_Space);
    Type(add->txtName, name);
    Type(add->txtPass, "s3");
    Click(add->btnOK);
    ASSERT_TRUE(NoneIsOpen());
  }
  EXPECT_THAT(RowTexts(myWindow->Networks()), ElementsAre("North", "So\\nuth", "North", "O'Brien"));
  EXPECT_EQ(Query("SELECT * FROM networks WHERE rowid > 2"), "North|s3|5|1;O'Brien|s3|5|1;");
  TestClient ann(myWindow->sSocket->Port());
  EXPECT_TRUE(ann.LogIn("O'Brien", "s3", "Ann"));
}

TEST_F(DialogsTest, MaxUsersStayFromOneToAThousand) {
  ChooseOn(*myWindow->lstNetworks, -1, "Add Network");
  auto* add = Opened<wndAddNetwork>("wndAddNetwork");
  ASSERT_NE(add, nullptr);
  const auto steps = [&](bool up) {
    Step(*add->UpDownArrows1, up);
    const std::string first = add->txtUsers->text().toStdString();
    QTest::keyClick(add->txtUsers, up ? Qt::Key_Up : Qt::Key_Down);
    return first + " " + add->txtUsers->text().toStdString();
  };
  EXPECT_EQ(steps(true), "6 7");
  EXPECT_EQ(steps(false), "6 5");
  add->txtUsers->setFocus();
  add->txtUsers->selectAll();
  QTest::keyClicks(add->txtUsers, "0");
  EXPECT_EQ(add->txtUsers->text(), "1");
  EXPECT_EQ(steps(false), "1 1");
  add->txtUsers->selectAll();
  QTest::keyClicks(add->txtUsers, "5000");
  EXPECT_EQ(add->txtUsers->text(), "1000");
  EXPECT_EQ(steps(true), "1000 1000");
  Click(add->btnOK);
  EXPECT_EQ(Query("SELECT * FROM networks WHERE rowid > 2"), "||1000|0;");
}

TEST_F(DialogsTest, EditedNetworkKeepsItsName) {
  ChooseOn(*myWindow->lstNetworks, 1, "Edit Network");
  auto* edit = Opened<wndEditNetwork>("wndEditNetwork");
  ASSERT_NE(edit, nullptr);
  EXPECT_TRUE(edit->chkEnable->isChecked());
  EXPECT_EQ(edit->txtPass->text(), "secret");
  EXPECT_EQ(edit->txtUsers->text(), "5");
  QTest::keyClick(edit->chkEnable, Qt::Key_Space);
  Type(edit->txtPass, "other");
  Click(edit->btnCancel);
  ASSERT_TRUE(NoneIsOpen());
  const auto south = myWindow->Networks().NetworkAt(1);
  EXPECT_TRUE(south->Enabled);
  EXPECT_EQ(south->Password, "secret");

  ChooseOn(*myWindow->lstNetworks, 1, "Edit Network");
  edit = Opened<wndEditNetwork>("wndEditNetwork");
  ASSERT_NE(edit, nullptr);
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
  EXPECT_THAT(RowTexts(myWindow->Networks()), ElementsAre("North", "So\\nuth"));
  EXPECT_THAT(myBoxes, IsEmpty());
}

TEST_F(DialogsTest, EditTellsTheDatabasesErrorAndCloses) {
  myWindow->Networks().NetworkAt(0)->NetworkName = "O'Brien";
  ChooseOn(*myWindow->lstNetworks, 0, "Edit Network");
  auto* edit = Opened<wndEditNetwork>("wndEditNetwork");
  ASSERT_NE(edit, nullptr);
  Step(*edit->UpDownArrows1, true);
  Click(edit->btnOK);
  ASSERT_EQ(myBoxes.size(), 1U);
  EXPECT_EQ(myBoxes[0].text, "near \"Brien\": syntax error");
  EXPECT_TRUE(NoneIsOpen());
  EXPECT_EQ(myWindow->Networks().NetworkAt(0)->MaxUsers, 6);
  EXPECT_EQ(Query("SELECT users FROM networks"), "5;5;");
}

TEST_F(DialogsTest, MessageReachesTheChosenNetworks) {
  const auto ann = LoggedIn("Ann");
  const auto ben = LoggedIn("Ben", "So\nuth");
  const auto send = [&](int row, const QString& text) {
    ChooseInMenuBar("&File", "Send Message");
    auto* message = Opened<wndMessage>("wndMessage");
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->pmNetwork->currentText(), "(All Networks)");
    ASSERT_EQ(message->pmNetwork->count(), 3);
    EXPECT_EQ(message->pmNetwork->itemText(1), "North");
    EXPECT_EQ(message->pmNetwork->itemText(2), "So\\nuth");
    for (int i = 0; i < row; ++i)
      QTest::keyClick(message->pmNetwork, Qt::Key_Down);
    QTest::keyClicks(message->fldText, text);
    Click(message->btnSend);
    EXPECT_TRUE(NoneIsOpen());
  };
  send(0, "");
  send(0, "to all");
  send(2, "to the south");
  send(1, "to the north");
  EXPECT_THAT(ann->Drain(),
              ElementsAre(WireMessage{998, "to all"}, WireMessage{998, "to the north"}));
  EXPECT_THAT(ben->Drain(),
              ElementsAre(WireMessage{998, "to all"}, WireMessage{998, "to the south"}));
}

TEST_F(DialogsTest, MessageEndsTheProgramAtAClientWithoutNetwork) {
  auto& application = static_cast<Application&>(*qApp);
  application.LastResort = [this] {
    CountLeaks(true);
    myApp.LastResort();
  };
  const auto ann = LoggedIn("Ann");
  TestClient newcomer(myWindow->sSocket->Port());
  ASSERT_EQ(newcomer.Receive(), (WireMessage{1, "Network"}));
  const auto ben = LoggedIn("Ben");
  // An error that is thrown through Qt's handling of a click leaves memory of Qt's behind.
  CountLeaks(false);
  ChooseInMenuBar("&File", "Send Message");
  auto* message = Opened<wndMessage>("wndMessage");
  ASSERT_NE(message, nullptr);
  QTest::keyClicks(message->fldText, "hello");
  QTimer::singleShot(0, [&] { Click(message->btnSend); });
  EXPECT_EQ(Application::exec(), 1);
  application.LastResort = nullptr;
  ASSERT_EQ(myBoxes.size(), 1U);
  EXPECT_EQ(myBoxes[0].text,
            "An exception of class NilObjectException was not handled.  The application must shut "
            "down.");
  EXPECT_EQ(ann->Receive(), (WireMessage{998, "hello"}));
  EXPECT_TRUE(newcomer.HearsNothing());
  EXPECT_TRUE(ben->HearsNothing());
}

TEST_F(DialogsTest, SettingsAreCheckedInOrderAndStored) {
  const std::vector<NetworkInterface> interfaces = {{"00:1A:2B:3C:4D:5E", "192.0.2.1"},
                                                    {"00:1A:2B:3C:4D:5F", "192.0.2.2"}};
  const auto open = [&] {
    auto* settings = new wndSettings(myApp, interfaces, *myWindow);
    settings->Open(settings->fldConns);
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
  EXPECT_EQ(settings->pmNIC->itemText(1), "192.0.2.2");
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
  std::vector<std::string> texts;
  for (const MessageBox& box : myBoxes)
    texts.push_back(box.text);
  const std::string noPort = "You must select a valid port number greater than or equal to 10000.";
  const std::string fewConnections = "You must select no fewer than 2 maximum connections.";
  EXPECT_THAT(texts, ElementsAre("You must select a valid network interface.", noPort, noPort,
                                 fewConnections, fewConnections));
  EXPECT_TRUE(settings->isVisible());
  EXPECT_EQ(stored(), before);
  Type(settings->fldPort, "65535");
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
}

TEST_F(DialogsTest, ConnectionsStepDownFromOneToTwo) {
  ChooseInMenuBar("&File", "Settings...");
  auto* settings = Opened<wndSettings>("wndSettings");
  ASSERT_NE(settings, nullptr);
  const struct {
    const char* typed;
    bool up;
    const char* then;
  } steps[] = {
      {"2", false, "1"}, {"1", false, "2"}, {"9998", true, "9999"}, {"9999", true, "9999"}};
  for (const auto& step : steps) {
    Type(settings->fldConns, step.typed);
    Step(*settings->udConns, step.up);
    EXPECT_EQ(settings->fldConns->text(), step.then) << step.typed;
    Type(settings->fldConns, step.typed);
    QTest::keyClick(settings->fldConns, step.up ? Qt::Key_Up : Qt::Key_Down);
    EXPECT_EQ(settings->fldConns->text(), step.then) << step.typed;
  }
}

TEST_F(DialogsTest, SelectedBansAreLifted) {
  Query(
      "INSERT INTO bans (address, \"by\", reason, bandate, network) VALUES "
      "('192.0.2.1','Ann','a','2011-03-07 09:05:02','North'), ('192.0.2.2','Ann','b','','North'),"
      "('192.0.2.3','Ann','c','','North'), ('192.0.2.4','Ann','d','','North')");
  const QLocale before;
  QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  Click(myWindow->btnBans);
  QLocale::setDefault(before);
  auto* bans = Opened<wndViewBans>("wndViewBans");
  ASSERT_NE(bans, nullptr);
  const ListBox& list = *bans->lstBans;
  EXPECT_THAT(RowTexts(*list.model()),
              ElementsAre("192.0.2.1|Ann|a|07.03.11 09:05", "192.0.2.2|Ann|b|", "192.0.2.3|Ann|c|",
                          "192.0.2.4|Ann|d|"));
  EXPECT_FALSE(bans->btnDel->isEnabled());
  ClickRow(list, 0);
  ClickRow(list, 2, Qt::ControlModifier);
  Click(bans->btnDel);
  EXPECT_THAT(RowTexts(*list.model()), ElementsAre("192.0.2.2|Ann|b|", "192.0.2.4|Ann|d|"));
  EXPECT_EQ(Query("SELECT reason FROM bans"), "b;d;");
  EXPECT_FALSE(bans->btnDel->isEnabled());
}

TEST_F(DialogsTest, SelectedAdministratorsAreRemovedByKey) {
  Query(
      "INSERT INTO admins (name, address, network) VALUES ('Ann','192.0.2.1','North'),"
      "('Ben','192.0.2.2','North'), ('Cid','192.0.2.3','North')");
  Click(myWindow->btnAdmins);
  auto* admins = Opened<wndViewAdmins>("wndViewAdmins");
  ASSERT_NE(admins, nullptr);
  ListBox& list = *admins->lstAdmins;
  ClickRow(list, 0);
  ClickRow(list, 2, Qt::ControlModifier);
  QTest::keyClick(&list, Qt::Key_Delete);
  EXPECT_THAT(RowTexts(*list.model()), ElementsAre("Ben|North|192.0.2.2"));
  EXPECT_EQ(Query("SELECT name FROM admins"), "Ben;");
}
