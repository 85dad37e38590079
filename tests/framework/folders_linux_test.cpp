#include <vector>

#include <gtest/gtest.h>

#include "framework/folders.h"

namespace corvane {
namespace {

TEST(Folders, ApplicationDataFollowsTheEnvironment) {
  struct Case {
    const char* dataHome;
    const char* home;
    std::optional<QString> folder;
  };
  const std::vector<Case> cases = {
      {"/data/home", "/home/op", QStringLiteral("/data/home")},
      {"/data//home/", nullptr, QStringLiteral("/data/home")},
      {"relative", "/home/op", QStringLiteral("/home/op/.local/share")},
      {"", "/home/op", QStringLiteral("/home/op/.local/share")},
      {nullptr, "/", QStringLiteral("/.local/share")},
      {nullptr, "relative", std::nullopt},
      {nullptr, nullptr, std::nullopt},
  };
  const QByteArray oldDataHome = qgetenv("XDG_DATA_HOME");
  const QByteArray oldHome = qgetenv("HOME");
  const auto set = [](const char* variable, const char* value) {
    if (value == nullptr) {
      qunsetenv(variable);
    } else {
      qputenv(variable, value);
    }
  };
  for (const Case& c : cases) {
    set("XDG_DATA_HOME", c.dataHome);
    set("HOME", c.home);
    EXPECT_EQ(ApplicationDataFolder(), c.folder);
  }
  set("XDG_DATA_HOME", oldDataHome.isNull() ? nullptr : oldDataHome.constData());
  set("HOME", oldHome.isNull() ? nullptr : oldHome.constData());
}

}  // namespace
}  // namespace corvane
