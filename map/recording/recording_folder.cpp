#include "map/recording/recording_folder.h"

#include <QDir>
#include <QFile>

namespace corvane::map {
namespace {

constexpr QLatin1String kSuffix(".corvane-recording");
constexpr qint64 kMaxHours = 24;
constexpr qsizetype kMaxShown = 1000;
constexpr qint64 kMebibyte = 1 << 20;

}  // namespace

QFileInfoList RecordingFolder::Files() const {
  return QDir(myPath).entryInfoList({'*' + kSuffix}, QDir::Files | QDir::NoSymLinks, QDir::Time);
}

QString RecordingFolder::Append(const RecordingSource& source, const QByteArray& block,
                                const RecordingLimits& limits) {
  QDateTime now = QDateTime::currentDateTimeUtc();
  const QFileInfo last(myFile);
  QByteArray bytes = block;
  if (source != mySource || !last.exists() ||
      last.size() + block.size() > limits.mebibytes * kMebibyte / 4 ||
      myFileBegin.secsTo(now) >= kMaxHours * 3600) {
    if (!QDir().mkpath(myPath)) return tr("the folder %1 cannot be made").arg(myPath);
    do {
      now = QDateTime::currentDateTimeUtc();
      // Another map may be recording, too.
      myFile = QStringLiteral("%1/%2-%3%4")
                   .arg(myPath, now.toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")))
                   .arg(QCoreApplication::applicationPid())
                   .arg(kSuffix);
    } while (QFile::exists(myFile));
    myFileBegin = now;
    mySource = source;
    bytes = Recording::FirstLine(source) + block;
  }
  QFile file(myFile);
  const bool isOpen =
      file.open(QFile::WriteOnly | QFile::Append, QFile::ReadOwner | QFile::WriteOwner);
  const qint64 written = isOpen ? file.write(bytes) : -1;
  if (written < bytes.size() || !file.flush()) {
    // Half a block must remain the file's last.
    myFile.clear();
    // Qt has no text for a write that was cut short.
    return written >= 0 && written < bytes.size() ? tr("the disk is full") : file.errorString();
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
