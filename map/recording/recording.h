#pragma once

#include <optional>
#include <vector>

#include <QByteArray>
#include <QFile>
#include <QString>

namespace corvane::map {

// The network that is recorded.
struct RecordingSource {
  QString host;
  quint16 port = 0;
  QString network;

  bool operator==(const RecordingSource&) const = default;
};

// A file of blocks. Its first line is a JSON object with the source. Knows where each block lies; a
// half block at the end, which a crash leaves, is ignored. Opens the file only to read, so that it
// can be deleted at any time. Times are milliseconds since 1970 (UTC). Files may come from anybody.
class Recording {
 public:
  // A day has 8,640, and one more for each time that the connection is lost.
  static constexpr std::size_t kMaxBlocks = 20'000;

  // None if the file is not a recording or holds no whole block.
  static std::optional<Recording> Open(const QString& path);
  // The beginning of a new file.
  static QByteArray FirstLine(const RecordingSource& source);

  const QString& Path() const { return myPath; }
  const RecordingSource& Source() const { return mySource; }
  qint64 Begin() const { return myBlocks.front().begin; }
  qint64 End() const { return myEnd; }
  qint64 Bytes() const { return myBytes; }
  // The most members in a block.
  quint32 Members() const { return myMembers; }
  // Whether something after End() cannot be read.
  bool IsDamaged() const { return myIsDamaged; }

  std::size_t Blocks() const { return myBlocks.size(); }
  qint64 BeginOf(std::size_t block) const { return myBlocks[block].begin; }
  // The last block that begins then or earlier, else the first.
  std::size_t BlockAt(qint64 time) const;
  // The bytes of a block, for a BlockReader; others if the file has changed meanwhile.
  QByteArray Load(std::size_t block) const;

 private:
  struct Block {
    qint64 begin;
    qint64 offset;
  };

  void FindBlocks(QFile& file);

  QString myPath;
  RecordingSource mySource;
  std::vector<Block> myBlocks;
  qint64 myEnd = 0;
  qint64 myBytes = 0;
  quint32 myMembers = 0;
  bool myIsDamaged = false;
};

}  // namespace corvane::map
