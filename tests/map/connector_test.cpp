#include <QAbstractItemView>
#include <QFile>

#include "tests/map/map_fixture.h"
#include "tests/support/false_server.h"

namespace corvane::map {
namespace {

using State = client::Connection::State;

class ConnectorTest : public WindowTest {
 protected:
  // The dialog's text after a failed attempt.
  std::string Refusal() {
    auto* dialog = Opened<ConnectDialog>("ConnectDialog");
    EXPECT_TRUE(PumpUntil([&] { return dialog->btnConnect->isEnabled(); }));
    return dialog->lblMessage->text().toStdString();
  }
};

TEST_F(ConnectorTest, ShowsWhatIsRefused) {
  TestServer server;
  server.AddNetwork("North");
  TestClient bob(server.Port());
  ASSERT_TRUE(bob.Login("North", "secret", "Bob"));
  const auto focus = [this] { return Opened<ConnectDialog>("ConnectDialog")->focusWidget(); };
  Login(server.Port(), "Ann", "secret", "South");
  EXPECT_THAT(Refusal(), testing::HasSubstr("no such network, or it is full or disabled"));
  EXPECT_EQ(focus(), Opened<ConnectDialog>("ConnectDialog")->txtNetwork);
  Login(server.Port(), "Ann", "wrong");
  EXPECT_THAT(Refusal(), testing::HasSubstr("Wrong password"));
  EXPECT_EQ(focus(), Opened<ConnectDialog>("ConnectDialog")->txtPassword);
  Login(server.Port(), "bob");
  EXPECT_THAT(Refusal(), testing::HasSubstr("three minutes"));
  EXPECT_EQ(focus(), Opened<ConnectDialog>("ConnectDialog")->txtUser);
  EXPECT_EQ(State(), State::Offline);
  Login(server.Port(), "Cy");
  ASSERT_TRUE(Reaches(State::Online));
  EXPECT_TRUE(PumpUntil([&] { return !IsOpen("ConnectDialog"); }));
  // The next dialog closes after a success, too.
  Login(server.Port());
  ASSERT_TRUE(Reaches(State::Online));
  EXPECT_TRUE(PumpUntil([&] { return !IsOpen("ConnectDialog"); }));
  EXPECT_TRUE(PumpUntil(
      [&] { return myWindow->stsLine->lblState->text() == "Ann in North on 127.0.0.1, 1 other"; }));
  EXPECT_FALSE(myWindow->actions->mnuAdministration->menuAction()->isVisible());
  server.Query("INSERT INTO bans (address) VALUES ('127.0.0.1')");
  Login(server.Port());
  EXPECT_THAT(Refusal(), testing::HasSubstr("refuses this address"));
  EXPECT_EQ(focus(), Opened<ConnectDialog>("ConnectDialog")->txtHost);
}

TEST_F(ConnectorTest, RecentServersCanBeRemoved) {
  for (const char* host : {"c", "b", "a"})
    Settings(myFolder.filePath("map.ini")).Remember({host, 1, "North", "Ann", "digest"});
  myWindow->AskWhere();
  auto* dialog = Opened<ConnectDialog>("ConnectDialog");
  const auto left = [&] {
    QString hosts;
    for (const RecentServer& server : Settings(myFolder.filePath("map.ini")).RecentServers())
      hosts += server.host;
    return hosts + " and " + dialog->txtHost->text();
  };
  dialog->cmbRecent->setFocus();
  dialog->cmbRecent->showPopup();
  QTest::keyClick(dialog->cmbRecent->view(), Qt::Key_Down);
  QTest::keyClick(dialog->cmbRecent->view(), Qt::Key_Delete);
  EXPECT_EQ(left(), "ac and a");
  dialog->cmbRecent->hidePopup();
  QTest::keyClick(dialog->cmbRecent, Qt::Key_Delete);
  EXPECT_EQ(left(), "c and c");
  Click(dialog->btnRemove);
  EXPECT_EQ(left(), " and ");
  EXPECT_EQ(dialog->focusWidget(), dialog->txtHost);
}

TEST_F(ConnectorTest, CancellingEndsTheAttempt) {
  FalseServer silent;
  Login(silent.Port());
  ASSERT_TRUE(silent.Accept());
  ASSERT_TRUE(Reaches(State::LoggingIn));
  Click(Opened<ConnectDialog>("ConnectDialog")->btnCancel);
  EXPECT_EQ(State(), State::Offline);
  EXPECT_TRUE(PumpUntil([&] { return !silent.HasClient(); }));
  // The input is still there.
  myWindow->AskWhere();
  auto* dialog = Opened<ConnectDialog>("ConnectDialog");
  EXPECT_EQ(dialog->lblMessage->text(), "");
  Click(dialog->chkShow);
  EXPECT_EQ(dialog->txtPassword->echoMode(), QLineEdit::Normal);
  Click(dialog->btnCancel);
  myWindow->AskWhere();
  EXPECT_EQ(dialog->txtPassword->echoMode(), QLineEdit::Password);
  Click(dialog->btnConnect);
  ASSERT_TRUE(silent.Accept());
  ASSERT_TRUE(Reaches(State::LoggingIn));
  const client::Destination& where = myWindow->Wire().CurrentDestination();
  EXPECT_EQ(where.port, silent.Port());
  EXPECT_EQ(where.account.network, "North");
  EXPECT_EQ(where.account.userName, "Ann");
  EXPECT_EQ(where.account.passwordDigest, PasswordDigest("secret"));
}

TEST_F(ConnectorTest, RemembersServersAndTheDigestOnlyIfWanted) {
  TestServer server;
  server.AddNetwork("North");
  const auto fileHolds = [&](const QByteArray& text) {
    QFile file(myFolder.filePath("map.ini"));
    EXPECT_TRUE(file.open(QFile::ReadOnly));
    return file.readAll().contains(text);
  };
  const QByteArray digest = QByteArray::fromStdString(PasswordDigest("secret")).toHex();
  Login(server.Port());
  ASSERT_TRUE(Reaches(State::Online));
  myWindow->resize(870, 610);
  myWindow->close();
  MakeWindow();
  EXPECT_EQ(myWindow->size(), QSize(870, 610));
  EXPECT_FALSE(fileHolds(digest));
  myWindow->AskWhere();
  auto* dialog = Opened<ConnectDialog>("ConnectDialog");
  EXPECT_EQ(dialog->txtHost->text(), "127.0.0.1");
  EXPECT_EQ(dialog->spnPort->value(), server.Port());
  EXPECT_EQ(dialog->txtNetwork->text(), "North");
  EXPECT_EQ(dialog->txtUser->text(), "Ann");
  EXPECT_EQ(dialog->txtPassword->placeholderText(), "");
  Type(dialog->txtPassword, "secret");
  dialog->chkRemember->setChecked(true);
  Click(dialog->btnConnect);
  ASSERT_TRUE(Reaches(State::Online));

  myWindow->close();
  MakeWindow();
  EXPECT_TRUE(fileHolds(digest));
  EXPECT_FALSE(fileHolds("secret"));
  myWindow->AskWhere();
  dialog = Opened<ConnectDialog>("ConnectDialog");
  Type(dialog->txtPassword, "wrong");
  Click(dialog->btnConnect);
  EXPECT_THAT(Refusal(), testing::HasSubstr("Wrong password"));
  dialog->txtPassword->clear();
  QTest::keyClick(dialog, Qt::Key_Return);
  EXPECT_TRUE(Reaches(State::Online)) << "with the remembered digest";
}

TEST_F(ConnectorTest, ReconnectsToARestartedServerAndOnDemandAtOnce) {
  auto server = std::make_unique<TestServer>();
  server->AddNetwork("North");
  const std::int32_t port = server->Port();
  TestClient bob(port);
  ASSERT_TRUE(bob.Login("North", "secret", "Bob"));
  Login(port);
  ASSERT_TRUE(Reaches(State::Online));
  ASSERT_TRUE(RowsAre({"Bob|||||No place"}));
  EXPECT_TRUE(myWindow->Board().All().empty());
  bob.Send(4, "1,2,0,3,0,0");
  ASSERT_TRUE(RowsAre({"Bob|1|2|0|3|Alive"}));
  Click(myWindow->barOwn->chkSend);
  QTest::keyClick(myWindow->map, Qt::Key_Right);
  myWindow->map->Follow(*myWindow->Wire().Others().Find("Bob"));
  server.reset();
  ASSERT_TRUE(Reaches(State::Waiting));
  EXPECT_THAT(myWindow->barState->lblText->text().toStdString(),
              testing::HasSubstr("Trying again in 1 s"));
  EXPECT_TRUE(Shows("The connection was lost"));
  // The last positions stay, grey.
  EXPECT_TRUE(RowsAre({"Bob|1|2|0|3|Alive"}));
  EXPECT_TRUE(PumpUntil([&] { return myWindow->Board().All().at(0)->isStale; }));
  // With time for the other to log in first.
  ASSERT_TRUE(PumpUntil([&] { return myWindow->Wire().RetryIn().count() > 800; }));
  server = std::make_unique<TestServer>(port);
  server->AddNetwork("North");
  TestClient again(port);
  ASSERT_TRUE(again.Login("North", "secret", "Bob"));
  ASSERT_EQ(State(), State::Waiting);
  Click(myWindow->barState->btnAct);
  EXPECT_EQ(State(), State::Connecting);
  EXPECT_TRUE(Reaches(State::Online));
  EXPECT_FALSE(myWindow->barState->isVisible());
  EXPECT_TRUE(RowsAre({"Bob|||||No place"}));
  // It sends its position again and goes on following.
  EXPECT_EQ(again.Receive(),
            (WireMessage{5, "Ann|" + std::to_string(OwnPosition::kStride) + ",0,0,100,0,0"}));
  again.Send(4, "1,2,3,4,0,0");
  EXPECT_TRUE(PumpUntil([&] { return myWindow->Facet() == 3; }));
  EXPECT_TRUE(myWindow->map->IsFollowing());
}

}  // namespace
}  // namespace corvane::map
