#include "client/tls.h"
#include "map/certificate_question.h"
#include "tests/map/map_fixture.h"
#include "tests/support/false_server.h"

namespace corvane::map {
namespace {

using State = client::Connection::State;

class CertificateTest : public WindowTest {
 protected:
  ConnectDialog* Dialog() { return Opened<ConnectDialog>("ConnectDialog"); }
  CertificateQuestion* Question() {
    EXPECT_TRUE(PumpUntil([&] { return IsOpen("CertificateQuestion"); }));
    return Opened<CertificateQuestion>("CertificateQuestion");
  }
  bool IsLetIn() {
    if (!server->Accept()) return false;
    server->LetIn();
    return Reaches(State::Online);
  }
  static QString Shown(const TestCertificate& of) {
    return client::FingerprintText(client::FingerprintOf(of.certificate.toDer()));
  }

  const TestCertificate certificate{"play.example"};
  std::unique_ptr<FalseServer> server = std::make_unique<FalseServer>(certificate);
  const RecentServer given{"127.0.0.1", server->Port(), "North", "Ann", "digest", true};
};

TEST_F(CertificateTest, IsTrustedOnceAndRefusedWhenItChanges) {
  myWindow->LoginTo(given);
  const std::string text = Question()->informativeText().toStdString();
  EXPECT_THAT(text, testing::HasSubstr("play.example"));
  EXPECT_THAT(text, testing::HasSubstr(Shown(certificate).right(19).toStdString()));
  Click(Question()->btnCancel);
  EXPECT_EQ(State(), State::Offline);
  Click(Dialog()->btnConnect);
  Click(Question()->btnTrust);
  ASSERT_TRUE(IsLetIn());

  myWindow->close();
  MakeWindow();
  myWindow->AskWhere();
  EXPECT_TRUE(Dialog()->chkEncrypted->isChecked());
  Type(Dialog()->txtHost, "localhost");
  EXPECT_EQ(Dialog()->txtFingerprint->text(), "") << "it is of the other server";
  Type(Dialog()->txtHost, given.host);
  EXPECT_EQ(Dialog()->txtFingerprint->text(), Shown(certificate));
  Click(Dialog()->btnConnect);
  ASSERT_TRUE(IsLetIn());

  myWindow->Wire().Close();
  const TestCertificate other;
  server.reset();
  server = std::make_unique<FalseServer>(other, given.port);
  RecentServer plain = given;
  plain.isEncrypted = false;
  myWindow->LoginTo(plain);
  ASSERT_TRUE(PumpUntil([&] { return Dialog()->btnConnect->isEnabled(); }));
  EXPECT_FALSE(IsOpen("CertificateQuestion"));
  for (const QString& shown : {Shown(certificate), Shown(other)})
    EXPECT_TRUE(Dialog()->lblMessage->text().contains(shown));
  EXPECT_EQ(Dialog()->focusWidget(), Dialog()->txtFingerprint);
  Type(Dialog()->txtFingerprint, "new");
  Click(Dialog()->btnConnect);
  EXPECT_TRUE(Dialog()->lblMessage->text().contains("64 hexadecimal"));
  Type(Dialog()->txtFingerprint, Shown(other));
  Type(Dialog()->txtHost, "localhost");
  EXPECT_EQ(Dialog()->txtFingerprint->text(), Shown(other)) << "it was typed";
  Type(Dialog()->txtHost, given.host);
  Click(Dialog()->btnConnect);
  EXPECT_TRUE(IsLetIn());
}

}  // namespace
}  // namespace corvane::map
