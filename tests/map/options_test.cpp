#include "map/options.h"

#include <QDir>
#include <QUrl>
#include <gtest/gtest.h>

namespace corvane::map {
namespace {

TEST(MapOptions, NameAServerAndAPicture) {
  const auto parsed = ParseOptions(
      {"corvane-map", "--server", "example.org", "--network", "Demo", "--user", "Ann", "--map",
       "a.png", "--map-frame", "-10,20,4", "--fingerprint", QString("0a B1:").repeated(16)},
      "secret");
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->server->host, "example.org");
  EXPECT_EQ(parsed.options->server->port, 12000);
  EXPECT_EQ(parsed.options->server->digest.toHex(), "5ebe2294ecd0e0f08eab7690d2a6ee69");
  EXPECT_TRUE(parsed.options->server->isEncrypted);
  EXPECT_EQ(parsed.options->server->fingerprint, QByteArray("\x0a\xb1").repeated(16));
  EXPECT_TRUE(parsed.options->picture->path.endsWith("/a.png"));
  EXPECT_EQ(parsed.options->picture->corner, QPointF(-10, 20));
  EXPECT_EQ(parsed.options->picture->unitsPerPixel, 4);
}

TEST(MapOptions, NameAPlace) {
  const QString folder = QDir::currentPath() + '/';
  const std::pair<QString, QString> cases[] = {
      {"corvane://h/--user", "corvane://h/--user"},
      {"--tls", folder + "--tls"},
      {QUrl::fromLocalFile(folder + "a b").toString(QUrl::FullyEncoded), folder + "a b"}};
  for (const auto& [argument, place] : cases) {
    const auto parsed = ParseOptions({"corvane-map", "--", argument}, "");
    ASSERT_TRUE(parsed.options);
    EXPECT_EQ(parsed.options->place, place);
  }
}

TEST(MapOptions, InvalidOnesAreRefusedWithAText) {
  const QList<std::pair<QStringList, QString>> cases{
      {{"--server", "example.org"}, "--server needs a --network and a --user"},
      {{"--server", "h", "--network", "n", "--user", "u", "--port", "70000"}, "from 1 to 65535"},
      {{"--map", "a.png", "--map-frame", "1,2"}, "X,Y,SCALE"},
      {{"--map", "a.png", "--map-frame", "1,2,0"}, "X,Y,SCALE"},
      {{"--password", "secret"}, "password"},
      {{"a.corvane", "foo"}, "foo"},
      {{"--server", "h", "--network", "n", "--user", "u", "--", "corvane://h/n"},
       "without a place"},
      {{"--fingerprint", QString("0aB").repeated(21)}, "64 hexadecimal digits"},
      {{"--fingerprint", QString("0x").repeated(32)}, "64 hexadecimal digits"},
  };
  for (const auto& [arguments, text] : cases) {
    const auto parsed = ParseOptions(QStringList("corvane-map") + arguments, "");
    EXPECT_FALSE(parsed.options) << arguments.join(' ').toStdString();
    EXPECT_EQ(parsed.answer.exitCode, 2);
    EXPECT_TRUE(parsed.answer.text.contains(text)) << parsed.answer.text.toStdString();
  }
}

}  // namespace
}  // namespace corvane::map
