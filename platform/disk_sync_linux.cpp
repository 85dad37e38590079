#include <fcntl.h>
#include <unistd.h>

#include <QFileInfo>

#include "platform/disk_sync.h"

namespace corvane {

namespace {

bool SyncFolder(const QString& folder, int (*sync)(int)) {
  const int opened =
      open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return false;
  const bool isSynced = sync(opened) == 0;
  close(opened);
  return isSynced;
}

}  // namespace

bool SyncToDisk(QFile& file) {
  return file.flush() && fsync(file.handle()) == 0 &&
         SyncFolder(QFileInfo(file).absolutePath(), fsync);
}

void SyncFileSystem(const QString& folder) {
  SyncFolder(folder, syncfs);
}

}  // namespace corvane
