#pragma once

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "storage/database_connection.h"
#include "tests/support/other_program.h"

namespace corvane {

// A database made by the installer's script, in a temporary folder.
class DatabaseTest : public testing::Test {
 protected:
  DatabaseTest() { MakeDatabase(file); }

  QString Path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }
  std::string Run(const std::string& statements) { return OtherProgram(file).Run(statements); }

  QTemporaryDir folder;
  QString file = folder.filePath(QStringLiteral("serverdb.rsd"));
  DatabaseConnection connection;
};

}  // namespace corvane
