#pragma once

#include <QCoreApplication>
#include <QFileInfo>
#include <QString>
#include <QStringList>

#include "map/recording/recording.h"

namespace corvane::map {

// What is kept. Older files, and the oldest beyond the size, are deleted.
struct RecordingLimits {
  static constexpr int kMinDays = 1;
  static constexpr int kMaxDays = 3650;
  static constexpr int kMinMebibytes = 10;
  static constexpr int kMaxMebibytes = 1'000'000;

  int days = 30;
  int mebibytes = 1000;
};

// The folder with the recordings, which only their user can read. A file holds at most a day, and a
// quarter of what is kept; its times go forward. Re-entrant: an object may be used by one thread at
// a time, and all may use the same folder.
class RecordingFolder {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::RecordingFolder)

 public:
  explicit RecordingFolder(QString path) : myPath(std::move(path)) {}

  // Appends the block to the file of the last call, or to a new one if that is full, deleted, of
  // another source or of a later time. Returns the error; empty if there is none.
  QString Append(const RecordingSource& source, const QByteArray& block,
                 const RecordingLimits& limits);
  // Deletes what is beyond the limits, but not the file of the last Append.
  void Keep(const RecordingLimits& limits) const;
  // The paths of the newest files, the newest first, at most 1000. Some may be no recordings.
  QStringList Paths() const;
  // Returns whether all files are gone.
  bool DeleteAll() const;

 private:
  QFileInfoList Files() const;

  QString myPath;
  QString myFile;  // of the last Append
  RecordingSource mySource;
  qint64 myBegin = 0;
  qint64 myEnd = 0;
};

}  // namespace corvane::map
