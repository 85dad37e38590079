#include "storage/app_settings.h"

#include <utility>
#include <vector>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/support/unprivileged_user.h"

namespace corvane {
namespace {

using namespace std::string_literals;

class AppSettingsTest : public testing::Test {
 protected:
  void Write(const QByteArray& content) const {
    QFile output(file);
    ASSERT_TRUE(output.open(QIODevice::WriteOnly));
    output.write(content);
  }
  QByteArray Content() const {
    QFile input(file);
    return input.open(QIODevice::ReadOnly) ? input.readAll() : QByteArray("no file");
  }
  // What a later start finds.
  std::string Stored(std::string_view name) const {
    AppSettings later(folder.path());
    later.Load();
    return later.GetValue(name, "none");
  }

  QTemporaryDir folder;
  QString file = folder.filePath(QStringLiteral("Corvane Server.xml"));
  AppSettings settings{folder.path()};
};

const QByteArray kFirstFile =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<settings>\n"
    "  <setting namestring=\"Port\" valuestring=\"12000\"/>\n"
    "</settings>\n";

TEST_F(AppSettingsTest, FirstRunWritesThePortAndNothingElse) {
  settings.Load();
  EXPECT_EQ(Content(), kFirstFile);
  EXPECT_EQ(settings.GetValue("port", ""), "12000");
  EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1);
}

TEST_F(AppSettingsTest, DefaultIsRememberedAndWrittenWithTheNextSave) {
  settings.Load();
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
      " valuestring='3'/></other><setting namestring='A' valuestring='4'/><setting/></any>");
  EXPECT_EQ(Stored("a"), "4");
  EXPECT_EQ(Stored("b"), "<2>");
  EXPECT_EQ(Stored("inner"), "none");
  EXPECT_EQ(Stored(""), "");
  EXPECT_EQ(Stored("Port"), "none");
  Write("<any><!-- remark -->text<?pi?></any>");
  EXPECT_EQ(Stored(""), "none");
}

TEST_F(AppSettingsTest, FileThatCannotBeReadIsIgnoredUntilTheNextSave) {
  QByteArray laughs = "<!DOCTYPE s [<!ENTITY e0 'ha'>";
  for (int i = 1; i < 30; ++i) {
    const QByteArray before = "&e" + QByteArray::number(i - 1) + ";";
    laughs += "<!ENTITY e" + QByteArray::number(i) + " '" + before + before + "'>";
  }
  laughs += "]><s><a namestring='Port' valuestring='&e29;'/></s>";
  const QByteArray entry = "<settings><setting namestring='Port' valuestring='1'/></settings>";
  for (const QByteArray& content : {QByteArray(), QByteArray("no XML"), entry.chopped(4), laughs,
                                    entry + QByteArray(1024 * 1024, ' ')}) {
    Write(content);
    settings.Load();
    EXPECT_EQ(settings.GetValue("Port", "none"), "none") << content.left(80).constData();
    EXPECT_EQ(Content(), content);
    settings.SetValue("Port", "2");
    EXPECT_EQ(Stored("Port"), "2");
  }
}

TEST_F(AppSettingsTest, AnyValueLeavesAReadableFile) {
  settings.Load();
  for (const auto& [value, stored] :
       std::vector<std::pair<std::string, std::string>>{{"<\"&'>\t\r\n end ", "<\"&'>\t\r\n end "},
                                                        {"\xF0\x9F\x97\xBA", "\xF0\x9F\x97\xBA"},
                                                        {"a\0b\x1B"s,
                                                         "a\xEF\xBF\xBD"
                                                         "b\xEF\xBF\xBD"},
                                                        {"\xEF\xBF\xBF", "\xEF\xBF\xBD"},
                                                        {"\xFC", "\xC3\xBC"},
                                                        {"", ""}}) {
    settings.SetValue("value", value);
    EXPECT_EQ(settings.GetValue("value", ""), value);
    EXPECT_EQ(Stored("value"), stored);
    EXPECT_EQ(Stored("Port"), "12000");
  }
}

TEST_F(AppSettingsTest, SaveThatFailsLeavesTheOldFile) {
  settings.Load();
  const auto everybodysFile = QFile::permissions(file) | QFile::WriteGroup | QFile::WriteOther;
  const auto nobodysFolder = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup |
                             QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
  // Nothing can be made or renamed in the folder, but the file itself might be overwritten.
  ASSERT_TRUE(QFile::setPermissions(file, everybodysFile));
  ASSERT_TRUE(QFile::setPermissions(folder.path(), nobodysFolder));
  {
    const UnprivilegedUser user;
    settings.SetValue("MaxConns", "7");
  }
  EXPECT_EQ(Content(), kFirstFile);
  EXPECT_EQ(settings.GetValue("MaxConns", ""), "7");
  ASSERT_TRUE(
      QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

TEST_F(AppSettingsTest, SaveReplacesTheFileInsteadOfRewritingIt) {
  settings.Load();
  QFile old(file);
  ASSERT_TRUE(old.open(QIODevice::ReadOnly));
  settings.SetValue("MaxConns", "7");
  EXPECT_EQ(old.readAll(), kFirstFile);
  EXPECT_NE(Content(), kFirstFile);
}

TEST_F(AppSettingsTest, FolderIsMadeWithTheFirstFile) {
  const QString below = folder.filePath(QStringLiteral("new/folder"));
  AppSettings(below).Load();
  EXPECT_TRUE(QFile::exists(below + QStringLiteral("/Corvane Server.xml")));
}

TEST_F(AppSettingsTest, WithoutAFileValuesLiveInMemory) {
  ASSERT_TRUE(QDir().mkdir(file));  // a folder in the file's place
  AppSettings nowhere{std::nullopt};
  for (AppSettings* store : {&settings, &nowhere}) {
    store->Load();
    EXPECT_EQ(store->GetValue("Port", "none"), "none");
    store->SetValue("Port", "1");
    EXPECT_EQ(store->GetValue("Port", "none"), "1");
    store->Load();
    EXPECT_EQ(store->GetValue("Port", "none"), "none");
  }
}

}  // namespace
}  // namespace corvane
