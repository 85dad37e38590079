#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "web/channel.h"
#include "web/config.h"
#include "web/links.h"

namespace corvane::web {
namespace {

class WebTest : public testing::Test {
 protected:
  QString Write(const QString& name, const QByteArray& bytes) const {
    QFile file(myFolder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    return file.fileName();
  }
  ConfigResult Read(const QByteArray& network, const QByteArray& others = {}) const {
    return ReadConfig(
        Write("web.json", "{\"data\":\"data\"" + others + ",\"networks\":[{" + network + "}]}"));
  }

  const QTemporaryDir myFolder;
};

const QByteArray kNetwork =
    R"("id":"alpha","server":"[::1]:1234","network":"Alpha","user":"Web","passwordFile":"pw")";

TEST_F(WebTest, ConfigurationHasDefaultsAndShowsNoMoreThanItSays) {
  Write("pw", "secret\r\nsecond line\n");
  const ConfigResult plain = Read(kNetwork);
  ASSERT_TRUE(plain.config) << plain.error.toStdString();
  EXPECT_TRUE(plain.config->address.isLoopback());
  EXPECT_EQ(plain.config->publicUrl, "http://127.0.0.1:8080");
  EXPECT_EQ(plain.config->data, myFolder.filePath("data"));
  const client::Destination& destination = plain.config->networks[0].destination;
  EXPECT_EQ(destination.host, "::1");
  EXPECT_EQ(destination.port, 1234);
  EXPECT_EQ(QByteArray::fromStdString(destination.account.passwordDigest).toHex(),
            "5ebe2294ecd0e0f08eab7690d2a6ee69");
  const ConfigResult full =
      Read(kNetwork + R"(,"facets":[2],"show":{"names":"none","state":false},"delaySeconds":60)",
           R"(,"public":"https://maps.example.org/guild/","listen":"0.0.0.0:81")");
  ASSERT_TRUE(full.config) << full.error.toStdString();
  EXPECT_EQ(full.config->publicUrl, "https://maps.example.org/guild");
  EXPECT_EQ(full.config->port, 81);
  const Shown& shown = full.config->networks[0].shown;
  EXPECT_EQ(shown.facets, QList<int>{2});
  EXPECT_EQ(shown.names, Shown::Names::None);
  EXPECT_TRUE(shown.hitPoints && !shown.state);
  EXPECT_EQ(shown.delay, std::chrono::minutes(1));
}

TEST_F(WebTest, WrongConfigurationIsRefusedWithTheFieldsName) {
  Write("pw", "secret");
  const struct {
    QByteArray network;
    QByteArray others;
    const char* named;
  } cases[] = {{kNetwork + R"(,"facet":[1])", "", "networks[0].facet"},
               {kNetwork + R"(,"facets":[1.5])", "", "networks[0].facets"},
               {kNetwork + R"(,"show":{"name":"none"})", "", "networks[0].show.name"},
               {kNetwork + R"(,"show":{"names":"some"})", "", "networks[0].show.names"},
               {kNetwork + R"(,"delaySeconds":-1)", "", "networks[0].delaySeconds"},
               {kNetwork + R"(,"tls":"yes")", "", "networks[0].tls"},
               {kNetwork + R"(,"fingerprint":"12")", "", "networks[0].fingerprint"},
               {kNetwork + R"(,"place":"none.corvane")", "", "none.corvane"},
               {R"("id":"a/b")", "", "networks[0].id"},
               {R"("id":"a")", "", "networks[0].server"},
               {kNetwork + "}, {" + kNetwork, "", "networks[1].id"},
               {kNetwork, R"(,"listen":"example.org:80")", "listen"},
               {kNetwork, R"(,"public":"ftp://example.org")", "public"},
               {kNetwork, R"(,"x":1)", "x: there is no such field"}};
  for (const auto& [network, others, named] : cases) {
    const ConfigResult result = Read(network, others);
    EXPECT_FALSE(result.config) << named;
    EXPECT_TRUE(result.error.contains(named)) << result.error.toStdString();
  }
}

TEST_F(WebTest, LinksAreStoredAsHashesEndAndAreRevoked) {
  const QDateTime now = QDateTime::currentDateTimeUtc();
  Links links(myFolder.path());
  const auto first = links.Add("alpha", "Ann", now.addSecs(3600));
  const auto second = links.Add("alpha", "Bob", {});
  ASSERT_TRUE(links.Add("alpha", "Cid", now.addSecs(-1)) && first && second);
  EXPECT_EQ(first->size(), 22);
  EXPECT_NE(*first, *second);
  QFile file(myFolder.filePath("links.json"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_FALSE(file.readAll().contains(first->toLatin1()));
  file.close();
  auto all = Links(myFolder.path()).All();
  ASSERT_TRUE(all && all->size() == 2);
  EXPECT_EQ(all->front().tokenHash, Links::HashOf(first->toLatin1()));
  EXPECT_TRUE(all->front().HasEnded(now.addSecs(3601)));
  EXPECT_EQ(links.Revoke("Ann"), 1);
  EXPECT_EQ(links.Revoke("Ann"), 0);
  // Numbers are never given again.
  EXPECT_EQ(links.Revoke("2"), 1);
  ASSERT_TRUE(links.Add("alpha", "", {}));
  all = links.All();
  ASSERT_TRUE(all && all->size() == 1);
  EXPECT_EQ(all->front().number, 4);
  for (const char* broken :
       {"{\"links\":", R"({"links":[{"number":1,"sha256":"ab","until":"soon"}]})"}) {
    Write("links.json", broken);
    EXPECT_FALSE(links.All() || links.Add("alpha", "", {}));
    EXPECT_TRUE(links.Error().contains("links.json"));
  }
}

TEST(Channel, ViewersGetChangesAndWhoFallsBehindTheSnapshot) {
  Channel channel;
  const auto next = [&channel](std::uint64_t& seen) {
    const Channel::Event event = channel.Next(seen);
    seen = event.version;
    return event.bytes ? *event.bytes : std::string();
  };
  std::uint64_t quick = 0, slow = 0;
  EXPECT_EQ(next(quick), "event: snapshot\ndata: {\"members\":[],\"online\":false}\n\n");
  EXPECT_EQ(next(slow), *Channel().Next(0).bytes);
  channel.Publish({{{1, R"("id":1)"}, {2, R"("id":2)"}}, {}, true});
  EXPECT_EQ(next(quick),
            "event: change\ndata: {\"members\":[{\"id\":1,\"age\":0},{\"id\":2,\"age\":0}],"
            "\"left\":[],\"online\":true}\n\n");
  // Neither repeats nor strangers make news.
  channel.Publish({{{1, R"("id":1)"}}, {7}, true});
  EXPECT_EQ(next(quick), "");
  channel.Publish({{}, {2}, true});
  EXPECT_EQ(next(quick), "event: change\ndata: {\"members\":[],\"left\":[2],\"online\":true}\n\n");
  EXPECT_EQ(next(slow),
            "event: snapshot\ndata: {\"members\":[{\"id\":1,\"age\":0}],\"online\":true}\n\n");
  EXPECT_EQ(next(slow), "");
}

}  // namespace
}  // namespace corvane::web
