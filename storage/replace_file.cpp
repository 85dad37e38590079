#include "storage/replace_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace corvane {

namespace {

// Writes until a write accepts nothing, since only that one reports why.
bool WriteWhole(QFileDevice& file, QByteArrayView content) {
  while (!content.isEmpty()) {
    const qint64 written = file.write(content.data(), content.size());
    if (written <= 0) return false;
    content = content.sliced(written);
  }
  return true;
}

bool Overwrite(QFile& file, QByteArrayView content) {
  return file.seek(0) && WriteWhole(file, content) && file.resize(content.size());
}

}  // namespace

QString ReplaceFile(const QString& file, QByteArrayView content) {
  QSaveFile replacement(file);
  if (replacement.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
    if (!WriteWhole(replacement, content)) {
      QString error = replacement.errorString();
      replacement.cancelWriting();
      return error;
    }
    if (replacement.commit()) return {};
  }
  // Only an existing file: the folder permits no new one.
  QFile inPlace(file);
  if (!QFileInfo(file).isFile() || !inPlace.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
    return replacement.errorString();
  const QByteArray before = inPlace.readAll();
  if (Overwrite(inPlace, content)) return {};
  QString error = inPlace.errorString();
  // The previous content still fits.
  Overwrite(inPlace, before);
  return error;
}

}  // namespace corvane
