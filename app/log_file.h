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

// A log file of at most 10 MiB, with the five before it as FILE.1 to FILE.5. Only its owner can
// read it. Makes its folder, but not that folder's parents. If the disk is full or the folder
// missing, drops lines and tries the file again every second. Needs a QCoreApplication.
class LogFile {
 public:
  explicit LogFile(const QString& file);

  // As LineWriter::WriteLine.
  void WriteLine(std::string_view line) { myLines.WriteLine(line); }

  std::uint64_t Dropped() const { return myLines.Dropped(); }

  // Flushes to the open file, then opens the file of this name again, which is a new one if another
  // program has rotated the log.
  void Reopen();

  // The newest lines, oldest first, from the last 1 MiB of this file and of the one before.
  std::vector<std::string> Last(std::size_t count);

 private:
  StreamWriting Write(std::string_view bytes);
  bool MakeRoom(std::size_t bytes);
  bool Open();
  void Rotate();
  QString Older(int number) const;

  QFile myFile;
  qint64 mySize = 0;
  bool myEndsInLine = false;  // the last line written is incomplete
  std::chrono::steady_clock::time_point myNextTry;
  LineWriter myLines;  // its destructor writes, so the file must still be there
};

}  // namespace corvane
