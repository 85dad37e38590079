#include <filesystem>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gmock/gmock.h>

#include "app/write_faults.h"
#include "tests/support/unprivileged_user.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

TEST(WriteFaults, NameEachThingThatWillNotWork) {
  QTemporaryDir folder;
  const auto permit = [&](const char* name, unsigned rights) {
    std::filesystem::permissions(folder.filePath(QLatin1String(name)).toStdString(),
                                 static_cast<std::filesystem::perms>(rights));
  };
  for (const char* name : {"serverdb.rsd", "Corvane Server.xml"}) {
    ASSERT_TRUE(QFile(folder.filePath(QLatin1String(name))).open(QIODevice::WriteOnly));
    permit(name, 0666);
  }
  const auto faults = [&](unsigned rights) {
    permit("", rights);
    const UnprivilegedUser user;
    return WriteFaults(folder.path());
  };
  EXPECT_THAT(faults(0777), ElementsAre());
  EXPECT_THAT(faults(0555), ElementsAre(StartsWith("There is no log: "),
                                        StartsWith("The database cannot be changed: ")));
  permit("serverdb.rsd", 0444);
  permit("Corvane Server.xml", 0444);
  ASSERT_TRUE(QDir(folder.path()).mkpath("logs/corvane-server.log"));
  EXPECT_THAT(faults(0777),
              ElementsAre(StartsWith("There is no log: "), StartsWith("Settings are not kept: "),
                          StartsWith("The database cannot be changed: ")));
  EXPECT_EQ(QDir(folder.path()).count(), 5U) << "nothing stays of having tried";
}

}  // namespace
}  // namespace corvane
