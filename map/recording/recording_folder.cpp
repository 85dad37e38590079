#include "map/recording/recording_folder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include "map/recording/recording_block.h"

namespace corvane::map {
namespace {

constexpr QLatin1String kSuffix(".corvane-recording");
constexpr qint64 kDay = qint64{24} * 3600 * 1000;  // ms
constexpr qsizetype kMaxShown = 1000;
constexpr qint64 kMebibyte = 1 << 20;

}  // namespace

QFileInfoList RecordingFolder::Files() const {
  return QDir(myPath).entryInfoList({'*' + kSuffix}, QDir::Files | QDir::NoSymLinks, QDir::Time);
}

QString RecordingFolder::Append(const RecordingSource& source, const QByteArray& block,
                                const RecordingLimits& limits) {
  const BlockHead head = BlockHead::Read(block).value_or(BlockHead());
  const QFileInfo last(myFile);
  QByteArray bytes = block;
  // The system's clock may have been set back.
  if (source != mySource || !last.exists() || head.begin < myEnd || head.End() - myBegin > kDay ||
      last.size() + block.size() > limits.mebibytes * kMebibyte / 4) {
    if (!QDir().mkpath(myPath)) return tr("the folder %1 cannot be made").arg(myPath);
    const QString now = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    // Another map may be recording, too.
    QTemporaryFile file(QStringLiteral("%1/%2-XXXXXX%3").arg(myPath, now, kSuffix));
    file.setAutoRemove(false);
    if (!file.open()) return file.errorString();
    myFile = file.fileName();
    mySource = source;
    myBegin = head.begin;
    bytes = Recording::FirstLine(source) + block;
  }
  myEnd = head.End();
  // Unbuffered, to learn how much was written.
  QFile file(myFile);
  const bool isOpen = file.open(QFile::WriteOnly | QFile::Append | QFile::Unbuffered);
  const qint64 written = isOpen ? file.write(bytes) : -1;
  if (written < bytes.size()) {
    // Half a block must remain the file's last.
    myFile.clear();
    // Qt has no text for a write that was cut short.
    return written >= 0 ? tr("the disk is full") : file.errorString();
  }
  Keep(limits);
  return {};
}

void RecordingFolder::Keep(const RecordingLimits& limits) const {
  const QDateTime oldest = QDateTime::currentDateTimeUtc().addDays(-limits.days);
  qint64 bytes = 0;
  for (const QFileInfo& file : Files()) {
    bytes += file.size();
    const bool isBeyond = bytes > limits.mebibytes * kMebibyte || file.lastModified() < oldest;
    if (isBeyond && file.filePath() != myFile) QFile::remove(file.filePath());
  }
}

QStringList RecordingFolder::Paths() const {
  QStringList paths;
  for (const QFileInfo& file : Files())
    if (paths.size() < kMaxShown) paths.append(file.filePath());
  return paths;
}

bool RecordingFolder::DeleteAll() const {
  for (const QFileInfo& file : Files())
    QFile::remove(file.filePath());
  return Files().isEmpty();
}

}  // namespace corvane::map
