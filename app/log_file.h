#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <QFile>
#include <QString>

#include "app/line_writer.h"

namespace corvane {

// A log in a file, of 10 MiB at most, with the five before it beside it as FILE.1 to FILE.5. Its
// folder is made, though not what that is in, and the file is for its owner only. A full disk, or a
// folder or file that is not there, costs lines and nothing else; it is tried again every second.
// Needs a QCoreApplication.
class LogFile {
 public:
  explicit LogFile(const QString& file);

  // Writes the line as LineWriter does.
  void WriteLine(std::string_view line) { myLines.WriteLine(line); }

  // Writes what it can to the file that is open, and opens the one of the name again.
  void Reopen();

  // The newest lines, the last at the end; from 1 MiB of the file and as much of the one before.
  std::vector<std::string> Last(std::size_t count);

 private:
  StreamWriting Write(std::string_view bytes);
  bool MakeRoom(std::size_t bytes);
  bool Open();
  void Rotate();
  QString Older(int number) const;

  QFile myFile;
  qint64 mySize = 0;
  bool myEndsInLine = false;  // what is written is not whole
  std::chrono::steady_clock::time_point myNextTry;
  LineWriter myLines;  // writes at its end, too
};

}  // namespace corvane
