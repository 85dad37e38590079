#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "storage/database_connection.h"

namespace corvane {

// A second program's hold on a database: plain SQLite, without the classes under test.
class OtherProgram {
 public:
  explicit OtherProgram(const QString& file) {
    EXPECT_EQ(sqlite3_open(file.toUtf8().constData(), &myDatabase), SQLITE_OK);
  }
  ~OtherProgram() { sqlite3_close(myDatabase); }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  // All values that the statements give: "|" between columns, ";" behind each row.
  std::string Run(const std::string& statements) {
    std::string output;
    const auto addRow = [](void* text, int count, char** values, char** /*names*/) {
      auto& result = *static_cast<std::string*>(text);
      for (int i = 0; i < count; ++i) {
        result += (i > 0 ? "|" : "");
        result += (values[i] == nullptr ? "NULL" : values[i]);
      }
      result += ';';
      return 0;
    };
    char* message = nullptr;
    EXPECT_EQ(sqlite3_exec(myDatabase, statements.c_str(), addRow, &output, &message), SQLITE_OK)
        << message;
    sqlite3_free(message);
    return output;
  }

 private:
  sqlite3* myDatabase = nullptr;
};

// A database made by the installer's script, in a folder of its own.
class DatabaseTest : public testing::Test {
 protected:
  DatabaseTest() {
    std::ifstream script(CORVANE_SCHEMA);
    Run(std::string(std::istreambuf_iterator<char>(script), {}));
  }

  QString Path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }
  std::string Run(const std::string& statements) { return OtherProgram(file).Run(statements); }

  QTemporaryDir folder;
  QString file = folder.filePath(QStringLiteral("serverdb.rsd"));
  DatabaseConnection connection;
};

}  // namespace corvane
