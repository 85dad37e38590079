#include "storage/app_settings.h"

#include <filesystem>

#include <gmock/gmock.h>

#include "tests/storage/app_settings_fixture.h"

namespace corvane {
namespace {

TEST_F(AppSettingsTest, DefaultIsRememberedAndWrittenWithTheNextSave) {
  settings.Load();
  EXPECT_EQ(settings.GetValue("port", ""), "12000");
  EXPECT_EQ(settings.GetValue("AttachedPort", "12000"), "12000");
  EXPECT_EQ(settings.GetValue("attachedport", "13000"), "12000");
  EXPECT_EQ(Content(), kFirstFile);
  settings.SetValue("MaxConns", "100");
  EXPECT_EQ(Stored("AttachedPort"), "12000");
  settings.SetValue("ATTACHEDPORT", "14000");
  EXPECT_TRUE(Content().contains("namestring=\"AttachedPort\" valuestring=\"14000\""));
  EXPECT_EQ(Content().count("<setting "), 3);
}

TEST_F(AppSettingsTest, EveryElementUnderTheRootIsAnEntryAndTheLastOneWins) {
  Write(
      "<any><!-- remark --><setting namestring='a' valuestring='1'/>text<?pi?>"
      "<other namestring='b' valuestring='&lt;2&gt;' more='x'><setting namestring='inner'"
      " valuestring='3'/></other><setting namestring='A' valuestring='4'/></any>");
  EXPECT_EQ(Stored("a"), "4");
  EXPECT_EQ(Stored("b"), "<2>");
  EXPECT_EQ(Stored("inner"), "none");

  // Large files, too.
  const QByteArray large = "<a namestring='a' valuestring='" + QByteArray(65'536, 'l') + "'/>";
  Write("<s>" + large.repeated(200) + "<a namestring='b' valuestring='2'/></s>");
  EXPECT_EQ(Stored("b"), "2");
}

TEST_F(AppSettingsTest, FileThatCannotBeReadIsIgnoredUntilTheNextSave) {
  QByteArray laughs = "<!DOCTYPE s [<!ENTITY e0 'ha'>";
  for (int i = 1; i < 30; ++i) {
    const QByteArray before = "&e" + QByteArray::number(i - 1) + ";";
    laughs += "<!ENTITY e" + QByteArray::number(i) + " '" + before + before + "'>";
  }
  laughs += "]><s><a namestring='Port' valuestring='&e29;'/></s>";
  const QByteArray large = "<a namestring='a' valuestring='" + QByteArray(65'536, 'l') + "'/>";
  const QByteArray entry = "<settings><setting namestring='Port' valuestring='1'/></settings>";
  for (const QByteArray& content :
       {QByteArray(), QByteArray("no XML"), entry.chopped(4), laughs,
        "<s>" + large.repeated(256) + entry.mid(10).chopped(11) + "</s>"}) {
    Write(content);
    std::vector<std::string> reported;
    settings.FaultReported = [&reported](const std::string& line) { reported.push_back(line); };
    settings.Load();
    EXPECT_THAT(reported, testing::ElementsAre(
                              testing::AllOf(testing::StartsWith("settings: " + file.toStdString()),
                                             testing::HasSubstr("cannot be read"))));
    QFile broken(file + ".broken");
    EXPECT_EQ(settings.GetValue("Port", "none"), "none") << content.left(80).constData();
    EXPECT_EQ(Content(), content);
    EXPECT_TRUE(settings.SetValue("Port", "1") && settings.SetValue("Port", "2"));
    EXPECT_EQ(Stored("Port"), "2");
    EXPECT_TRUE(broken.open(QIODevice::ReadOnly) && broken.readAll() == content);
  }
}

}  // namespace
}  // namespace corvane
