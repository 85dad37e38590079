#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include "geo/plain_file.h"

namespace corvane {

std::optional<QByteArray> ReadPlainFile(const QString& file, std::int64_t maxBytes) {
  // Without O_NONBLOCK, opening a pipe waits for a writer.
  const int descriptor =
      open(QFile::encodeName(file).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return std::nullopt;
  QFile opened;
  if (!opened.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
    close(descriptor);
    return std::nullopt;
  }
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid()) {
    return std::nullopt;
  }
  QByteArray bytes = opened.read(maxBytes + 1);
  if (opened.error() != QFileDevice::NoError || bytes.size() > maxBytes) return std::nullopt;
  return bytes;
}

}  // namespace corvane
