#include <csignal>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/support/test_client.h"
#include "updater/update_platform.h"

namespace corvane {
namespace {

// The outcome of the desktop's opener decides; an opener that is still running shows the installer.
TEST(LaunchInstaller, IsStartedUnlessTheDesktopsOpenerFails) {
  const QByteArray path = qgetenv("PATH");
  const struct {
    const char* script;
    bool started;
  } cases[] = {
      {"echo $$ > \"${0%/*}/process\"; exec sleep 30", true},
      {"test \"$1\" = '/tmp/a b.deb'", true},
      {"exit 3", false},
      {"kill -KILL $$", false},
      {nullptr, false},
  };
  for (const auto& row : cases) {
    const QTemporaryDir folder;
    QFile opener(folder.filePath("xdg-open"));
    if (row.script != nullptr) {
      ASSERT_TRUE(opener.open(QIODevice::WriteOnly));
      opener.write("#!/bin/sh\n" + QByteArray(row.script) + "\n");
      opener.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
      opener.close();
    }
    qputenv("PATH", folder.path().toUtf8() + (row.script == nullptr ? "" : ":" + path));
    QObject asker;
    std::optional<bool> started;
    LaunchInstaller("/tmp/a b.deb", asker, [&](bool result) { started = result; });
    EXPECT_TRUE(PumpUntil([&] { return started.has_value(); }));
    EXPECT_EQ(started, row.started) << (row.script == nullptr ? "none" : row.script);
    qputenv("PATH", path);

    QFile process(folder.filePath("process"));
    if (process.open(QIODevice::ReadOnly)) kill(process.readAll().trimmed().toInt(), SIGKILL);
  }
}

}  // namespace
}  // namespace corvane
