#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

#include "map/places/place_file.h"
#include "map/places/place_link.h"

namespace corvane::map {
namespace {

const QByteArray kPng("\x89PNG\r\n\x1a\nrest");

Place Full() {
  Place place{"play.example.org", 12443, true, QByteArray(32, '\x0a'), "Night|\"Owls\" \u00e9"};
  place.digest = QByteArray(16, '\xb1');
  place.pictures = {{-1, "../isle.png", kPng, {-10.5, 1e9}, 0.25}};
  place.landmarks = {{"Camp", "tent", 0xffff8000, "at eight\n", 2, {1200, -845.5}}};
  return place;
}

TEST(PlaceFile, ReadsBackAndIgnoresUnknownKeys) {
  QJsonObject root = QJsonDocument::fromJson(ToPlaceFile(Full())).object();
  root["later"] = QJsonObject{{"a", 1}};
  EXPECT_EQ(FromPlaceFile(QJsonDocument(root).toJson()).place, Full());
  const Place plain{"10.0.0.1", 1, false, {}, "n"};
  EXPECT_EQ(FromPlaceFile(ToPlaceFile(plain)).place, plain);
}

TEST(PlaceFile, WrongValuesAreRefused) {
  // Each replaces a part of the file.
  const std::tuple<QByteArray, QByteArray, const char*> cases[] = {
      {"play.example.org", "a b", "host"},
      {"12443", "0", "port"},
      {"12443", "65536", "port"},
      {"12443", "\"12443\"", "port"},
      {"true", "\"true\"", "encrypted"},
      {"true", "false", "fingerprint"},
      {"0a0a0a", "0a0ax", "fingerprint"},
      {"b1b1", "b1", "digest"},
      {"Night", QByteArray(250, 'n'), "network"},
      {"Night", "\\ud800", "network"},
      {kPng.toBase64(), "R0lGODlh", "pictures"},
      {kPng.toBase64(), "*", "pictures"},
      {"-10.5", "1.1e9", "pictures"},
      {"0.25", "0", "pictures"},
      {"0.25", "1e400", "not a place file"},
      {"1200", "1e9", "landmarks"},
      {"\"Point\"", "\"Line\"", "landmarks"},
      {"\"format\": 1", "\"format\": 2", "newer version"},
      {"\"format\": 1", "\"form\": 1", "not a place file"},
      {"\"digest\"", "\"a\": " + QByteArray(2000, '[') + QByteArray(2000, ']') + ", \"digest\"",
       "not a place file"},
      {"\"digest\"", "\"a\": [0" + QByteArray(",0").repeated(500'000) + "], \"digest\"",
       "too many values"},
      {"}", QByteArray(64 << 20, ' '), "larger than 64 MiB"}};
  for (const auto& [part, replacement, error] : cases) {
    QByteArray json = ToPlaceFile(Full());
    ASSERT_TRUE(json.contains(part)) << part.toStdString();
    const PlaceResult read = FromPlaceFile(json.replace(part, replacement));
    EXPECT_FALSE(read.place) << error;
    EXPECT_TRUE(read.error.contains(error)) << error << ": " << read.error.toStdString();
  }
  Place twice = Full();
  twice.pictures += twice.pictures;
  EXPECT_FALSE(FromPlaceFile(ToPlaceFile(twice)).place) << "a facet has one picture";
}

TEST(PlaceLink, HasOneFormAndNamesOfAnyBytes) {
  const QString fingerprint = QString("0a").repeated(32);
  const std::pair<QString, QString> cases[] = {
      {"corvane://Play.Example.org./A%2Fb%20c", "corvane://play.example.org:12000/A%2Fb%20c"},
      {"CORVANE://[2001:DB8::1]:1/%C3%A9?tls=0&x=1#y", "corvane://[2001:db8::1]:1/%C3%A9"},
      {" corvane://h/%FF|%00\n", "corvane://h:12000/%C3%BF%7C%00"},
      {"corvane://\u00fc.example/100%", "corvane://xn--tda.example:12000/100%25"},
      {"corvane://h:65535/n?fingerprint=" + QString("0A:").repeated(32),
       "corvane://h:65535/n?tls=1&fingerprint=" + fingerprint},
      {"corvane://1./n", "corvane://0.0.0.1:12000/n"},
      {"corvane://h../n", ""},
      {"https://h/n", ""},
      {"corvane:n", ""},
      {"corvane://h", ""},
      {"corvane:///n", ""},
      {"corvane://h:0/n", ""},
      {"corvane://h:65536/n", ""},
      {"corvane://play.example.org@h/n", ""},
      {"corvane://u:secret@h/n", ""},
      {"corvane://h/n?tls=yes", ""},
      {"corvane://h/n?tls=1&fingerprint=0a", ""},
      {"corvane://h/n?fingerprint=" + QString("0x").repeated(32), ""},
      {"corvane://h/" + QString(256, 'n'), ""},
      {"corvane://h/n?" + QString(kMaxPlaceLink, 'n'), ""}};
  for (const auto& [link, form] : cases) {
    const PlaceResult read = FromPlaceLink(link);
    EXPECT_EQ(read.place ? ToPlaceLink(*read.place) : QString(), form) << link.toStdString();
    EXPECT_EQ(read.error.isEmpty(), !form.isEmpty());
  }
  EXPECT_FALSE(ToPlaceLink(Full()).contains("b1b1")) << "never with a password";
}

}  // namespace
}  // namespace corvane::map
