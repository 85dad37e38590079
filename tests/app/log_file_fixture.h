#pragma once

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "app/log_file.h"
#include "tests/support/test_client.h"

namespace corvane {

class LogFileTest : public testing::Test {
 protected:
  // Waits until the file ends in the text; returns whether it does.
  bool EndsIn(const QByteArray& text) {
    return PumpUntil([&] {
      QFile file(path);
      return file.open(QIODevice::ReadOnly) && file.readAll().endsWith(text);
    });
  }

  QTemporaryDir folder;
  QString path = folder.filePath("logs/test.log");
};

}  // namespace corvane
