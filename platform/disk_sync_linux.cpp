#include <fcntl.h>
#include <unistd.h>

#include <QFileInfo>

#include "platform/disk_sync.h"

namespace corvane {

bool SyncToDisk(QFile& file) {
  if (!file.flush() || fsync(file.handle()) != 0) return false;
  const QByteArray folder = QFile::encodeName(QFileInfo(file).absolutePath());
  const int opened = open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return false;
  const bool isSynced = fsync(opened) == 0;
  close(opened);
  return isSynced;
}

}  // namespace corvane
