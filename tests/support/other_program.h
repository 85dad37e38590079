#pragma once

#include <string>

#include <QString>

struct sqlite3;

namespace corvane {

// Makes a database with the installer's script, or runs the script on one that is there.
void MakeDatabase(const QString& file);

// A second program's hold on a database: plain SQLite, without the classes under test.
class OtherProgram {
 public:
  explicit OtherProgram(const QString& file);
  ~OtherProgram();
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  // All values that the statements give: "|" between columns, ";" behind each row; then the
  // message of an error.
  std::string Run(const std::string& statements);

 private:
  sqlite3* myDatabase = nullptr;
};

}  // namespace corvane
