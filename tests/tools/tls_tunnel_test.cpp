#include "tools/swarm/tls_tunnel.h"

#include <gtest/gtest.h>

#include "tests/support/false_server.h"
#include "tests/support/test_client.h"

namespace corvane::swarm {
namespace {

TEST(TlsTunnel, CarriesBothWaysIfTheServerIsTrusted) {
  const TestCertificate certificate;
  const QByteArray fingerprint = client::FingerprintOf(certificate.certificate.toDer());
  FalseServer server(certificate);
  sockaddr_in address{};
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(server.Port());
  for (const bool isTrusted : {true, false}) {
    const TlsTunnel tunnel(address, {isTrusted ? fingerprint : QByteArray(32, 'x'), {}});
    QTcpSocket client;
    client.bind(QHostAddress("127.0.0.5"));
    client.connectToHost("127.0.0.1", ntohs(tunnel.Address().sin_port));
    client.write("early");
    const std::string sent(3'000'000, 'x');
    if (isTrusted) {
      ASSERT_TRUE(server.Accept());
      EXPECT_EQ(server.ClientAddress(), "127.0.0.5");
      EXPECT_TRUE(PumpUntil([&] { return server.Heard() == "early"; }));
      server.Send(sent);
      server.HangUp();
    }
    ASSERT_TRUE(PumpUntil([&] { return client.state() == QTcpSocket::UnconnectedState; }));
    EXPECT_EQ(client.readAll().size(), isTrusted ? sent.size() : 0);
    EXPECT_FALSE(server.IsOffered());
  }
}

}  // namespace
}  // namespace corvane::swarm
