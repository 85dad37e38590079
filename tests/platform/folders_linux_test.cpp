#include <gtest/gtest.h>

#include "platform/folders.h"

namespace corvane {
namespace {

TEST(Folders, DataFolderComesFromTheEnvironmentIfItIsAbsolute) {
  const struct {
    const char* home;
    const char* dataHome;
    std::optional<QString> folder;
  } cases[] = {
      {"/home/ann", "/data/", "/data"},
      {"/home/ann", "data", "/home/ann/.local/share"},
      {"/home/ann", "", "/home/ann/.local/share"},
      {"home", "", std::nullopt},
  };
  const QByteArray home = qgetenv("HOME");
  const QByteArray dataHome = qgetenv("XDG_DATA_HOME");
  for (const auto& expected : cases) {
    qputenv("HOME", expected.home);
    qputenv("XDG_DATA_HOME", expected.dataHome);
    EXPECT_EQ(ApplicationDataFolder(), expected.folder) << expected.dataHome;
  }
  qputenv("HOME", home);
  qputenv("XDG_DATA_HOME", dataHome);
}

}  // namespace
}  // namespace corvane
