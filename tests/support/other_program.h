#pragma once

#include <string>

#include <QString>

struct sqlite3;

namespace corvane {

// Runs the installer's script on the database, which is created if it is missing.
void MakeDatabase(const QString& file);

// A second program on a database: plain SQLite, without the classes under test.
class OtherProgram {
 public:
  explicit OtherProgram(const QString& file);
  ~OtherProgram();
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  // Returns all values, with "|" between columns and ";" after each row, then an error's message.
  std::string Run(const std::string& statements);

 private:
  sqlite3* myDatabase = nullptr;
};

}  // namespace corvane
