#pragma once

#include <string>
#include <string_view>

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "storage/app_settings.h"

namespace corvane {

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
  // The settings that a later start finds.
  std::string Stored(std::string_view name) const {
    AppSettings later(folder.path());
    later.Load();
    return later.GetValue(name, "none");
  }

  QTemporaryDir folder;
  QString file = folder.filePath(QStringLiteral("Corvane Server.xml"));
  AppSettings settings{folder.path()};
};

inline const QByteArray kFirstFile =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<settings>\n"
    "  <setting namestring=\"Port\" valuestring=\"12000\"/>\n"
    "</settings>\n";

}  // namespace corvane
