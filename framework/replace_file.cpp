#include "framework/replace_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace corvane {

namespace {

bool Overwrite(QFile& file, QByteArrayView content) {
  return file.seek(0) && file.write(content.data(), content.size()) == content.size() &&
         file.resize(content.size());
}

}  // namespace

bool ReplaceFile(const QString& file, QByteArrayView content) {
  QSaveFile replacement(file);
  if (replacement.open(QIODevice::WriteOnly)) {
    const bool isWhole =
        replacement.write(content.data(), content.size()) == content.size() && replacement.flush();
    if (!isWhole) {
      replacement.cancelWriting();
      return false;
    }
    if (replacement.commit()) return true;
  }
  // Only what is there: a file that could not be made beside could not be made here either.
  QFile inPlace(file);
  if (!QFileInfo(file).isFile() || !inPlace.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
    return false;
  const QByteArray before = inPlace.readAll();
  // What it held still has its place.
  if (Overwrite(inPlace, content)) return true;
  Overwrite(inPlace, before);
  return false;
}

}  // namespace corvane
