#include <memory>

#include <QSslConfiguration>
#include <gmock/gmock.h>

#include "client/connection.h"
#include "client/tls.h"
#include "tests/support/false_server.h"
#include "tests/support/test_client.h"

namespace corvane::client {
namespace {

using Cause = Ending::Cause;
using State = Connection::State;
using std::chrono::milliseconds;
using testing::HasSubstr;

class TlsTest : public testing::Test {
 protected:
  TlsTest() {
    // The system's authorities.
    auto configuration = before;
    configuration.setCaCertificates({own.certificate, expired.certificate});
    QSslConfiguration::setDefaultConfiguration(configuration);
    ended = connection.SessionEnded.Connect([this](const Ending& is) { ending = is; });
  }
  void TearDown() override { QSslConfiguration::setDefaultConfiguration(before); }

  void Open(std::uint16_t port, const std::optional<Tls>& tls) {
    ending.reset();
    connection.Open({"127.0.0.1", port, {"North", "digest", "Ann"}, tls});
  }
  bool Reaches(State state) {
    return PumpUntil([&] { return connection.CurrentState() == state; });
  }
  bool IsLetIn(FalseServer& server) {
    if (!server.Accept()) return false;
    server.LetIn();
    return Reaches(State::Online);
  }
  std::string Text() const { return ending->Explanation().toStdString(); }
  static std::string Shown(const TestCertificate& of) {
    return FingerprintText(FingerprintOf(of.certificate.toDer())).toStdString();
  }

  const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
  const TestCertificate own;
  const TestCertificate expired{"127.0.0.1", -1};
  std::optional<Ending> ending;
  Connection connection{{milliseconds(20), milliseconds(20), milliseconds(30'000),
                         milliseconds(30'000), milliseconds(500)}};
  SignalConnection ended;
};

TEST_F(TlsTest, TrustsAnAuthorityOrOnlyTheFingerprint) {
  for (const auto& [certificate, tls] :
       {std::pair(&own, Tls{}),
        std::pair(&own, Tls{FingerprintOf(own.certificate.toDer()), "elsewhere"}),
        std::pair(&expired, Tls{FingerprintOf(expired.certificate.toDer()), {}})}) {
    FalseServer server(*certificate);
    Open(server.Port(), tls);
    ASSERT_TRUE(IsLetIn(server));
    EXPECT_TRUE(PumpUntil([&] { return server.Heard().contains("digest"); }));
    // A long message comes whole, and the reason behind it.
    server.Send(WireBytes(998, std::string(600'000, 'x')) + WireBytes(996, "go"));
    ASSERT_TRUE(Reaches(State::Offline));
    EXPECT_EQ(ending->cause, Cause::Kicked);
  }
}

TEST_F(TlsTest, SendsNothingToAServerThatItDoesNotTrust) {
  const TestCertificate selfSigned;
  struct Case {
    const TestCertificate* certificate;
    Tls tls;
    Cause cause;
  };
  for (const Case& each :
       {Case{&selfSigned, {}, Cause::Untrusted}, Case{&expired, {}, Cause::Untrusted},
        Case{&own, {{}, "elsewhere.example"}, Cause::Untrusted},
        Case{&own, {FingerprintOf(expired.certificate.toDer()), {}}, Cause::CertificateChanged}}) {
    FalseServer server(*each.certificate);
    Open(server.Port(), each.tls);
    ASSERT_TRUE(Reaches(State::Offline));
    EXPECT_EQ(ending->cause, each.cause) << Text();
    EXPECT_THAT(Text(), HasSubstr(Shown(*each.certificate)));
    EXPECT_THAT(Text(), HasSubstr(FingerprintText(each.tls.fingerprint).toStdString()));
    PumpFor(milliseconds(50));
    EXPECT_FALSE(server.IsOffered()) << "the handshake has not ended";
    EXPECT_EQ(ending->certificate, each.certificate->certificate.toDer());
  }
}

TEST_F(TlsTest, ChecksAgainWhenItReconnects) {
  const Tls tls{FingerprintOf(own.certificate.toDer()), {}};
  auto server = std::make_unique<FalseServer>(own);
  const std::uint16_t port = server->Port();
  Open(port, tls);
  for (const bool isSame : {true, false}) {
    ASSERT_TRUE(IsLetIn(*server));
    server.reset();
    ASSERT_TRUE(Reaches(State::Waiting));
    server = std::make_unique<FalseServer>(isSame ? own : TestCertificate(), port);
  }
  ASSERT_TRUE(Reaches(State::Offline));
  EXPECT_EQ(ending->cause, Cause::CertificateChanged);
}

TEST_F(TlsTest, SaysWhatIsMissing) {
  FalseServer plain;
  FalseServer encrypted(own);
  // With a full backlog, the system does not answer.
  QTcpServer full;
  full.setListenBacklogSize(0);
  ASSERT_TRUE(full.listen(QHostAddress::LocalHost));
  full.pauseAccepting();
  QTcpSocket first;
  first.connectToHost("127.0.0.1", full.serverPort());
  ASSERT_TRUE(first.waitForConnected());
  const struct {
    std::uint16_t port;
    std::optional<Tls> tls;
    std::string sent;
    Cause cause;
    const char* text;
  } cases[] = {
      {plain.Port(), Tls{}, WireBytes(1, "Network"), Cause::NoTls, "may not expect one"},
      {plain.Port(), Tls{}, "", Cause::NoTls, "may not expect one"},
      {plain.Port(), {}, std::string("\x15\x03\x03\0\x02\x02\x46", 7), Cause::ExpectsTls, "(TLS)"},
      {encrypted.Port(), {}, "", Cause::NotGreeted, "(TLS)"},
      {full.serverPort(), {}, "", Cause::Unreachable, "cannot be reached: no answer"},
      {full.serverPort(), Tls{}, "", Cause::Unreachable, "cannot be reached: no answer"}};
  for (const auto& each : cases) {
    Open(each.port, each.tls);
    if (each.port == plain.Port()) {
      ASSERT_TRUE(plain.Accept());
      plain.Send(each.sent);
    }
    ASSERT_TRUE(Reaches(State::Offline));
    EXPECT_EQ(ending->cause, each.cause) << Text();
    EXPECT_THAT(Text(), HasSubstr(each.text));
  }
}

}  // namespace
}  // namespace corvane::client
