#include <QDir>
#include <QLockFile>

#include "control/folder_lock.h"

namespace corvane {

// Windows cannot delete a file that a process has open, so one that can be replaced is stale.
struct FolderLock::Lock {
  explicit Lock(const QString& name) : file(name) { file.setStaleLockTime(0); }

  QLockFile file;
};

FolderLock::FolderLock() = default;
FolderLock::~FolderLock() = default;

bool FolderLock::Take(const QString& dataFolder) {
  myLock = std::make_unique<Lock>(
      QDir(dataFolder).absoluteFilePath(QStringLiteral("corvane-server.lock")));
  return myLock->file.tryLock() || myLock->file.error() != QLockFile::LockFailedError;
}

}  // namespace corvane
