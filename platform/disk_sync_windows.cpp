#include <io.h>

#include "platform/disk_sync.h"

namespace corvane {

bool SyncToDisk(QFile& file) {
  return file.flush() && _commit(file.handle()) == 0;
}

void SyncFileSystem(const QString&) {}

}  // namespace corvane
