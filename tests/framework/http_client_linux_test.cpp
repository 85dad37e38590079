
#include <QSslConfiguration>
#include <QSslServer>
#include <gtest/gtest.h>

#include "framework/http_client.h"
#include "tests/support/test_certificate.h"
#include "tests/support/test_client.h"
#include "tests/support/web_server.h"

namespace corvane {
namespace {

TEST(HttpClient, FollowsNoRedirectFromHttpsToHttp) {
  const TestCertificate made;
  QSslConfiguration own = QSslConfiguration::defaultConfiguration();
  QSslConfiguration trusting = own;
  trusting.addCaCertificate(made.certificate);
  own.setLocalCertificate(made.certificate);
  own.setPrivateKey(made.key);
  auto listener = std::make_unique<QSslServer>();
  listener->setSslConfiguration(own);

  WebServer plain;
  plain.answers["/page"] = {OkReply("plain")};
  WebServer secure(std::move(listener), "https");
  secure.answers["/page"] = {OkReply("secure")};
  secure.answers["/down"] = {RedirectReply(plain.Address("/page"))};
  plain.answers["/up"] = {RedirectReply(secure.Address("/page"))};

  const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
  QSslConfiguration::setDefaultConfiguration(trusting);
  HttpClient client("Corvane-Test/1.2");
  const std::pair<std::string, std::string> cases[] = {{secure.Address("/page"), "secure"},
                                                       {plain.Address("/up"), "secure"},
                                                       {secure.Address("/down"), "failed"}};
  for (const auto& [address, result] : cases) {
    HttpRequest request;
    request.url = QUrl(QString::fromStdString(address));
    std::optional<HttpReply> reply;
    const auto transfer = client.Get(request, [&](const HttpReply& got) { reply = got; });
    ASSERT_TRUE(PumpUntil([&] { return reply.has_value(); }));
    EXPECT_EQ(reply->succeeded ? reply->body.toStdString() : "failed", result);
  }
  QSslConfiguration::setDefaultConfiguration(before);
}

}  // namespace
}  // namespace corvane
