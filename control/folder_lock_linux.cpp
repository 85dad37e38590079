#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QDir>
#include <QFile>

#include "control/folder_lock.h"

namespace corvane {

// A kernel lock, which ends with the process. (A process ID in a file could match another process
// after a restart.) The file stays: removing it could remove the one that another server has just
// locked.
struct FolderLock::Lock {
  explicit Lock(const QString& file)
      : descriptor(open(QFile::encodeName(file).constData(), O_RDWR | O_CREAT | O_CLOEXEC,
                        S_IRUSR | S_IWUSR)) {}
  ~Lock() {
    if (descriptor >= 0) close(descriptor);
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  const int descriptor;
};

FolderLock::FolderLock() = default;
FolderLock::~FolderLock() = default;

bool FolderLock::Take(const QString& dataFolder) {
  myLock = std::make_unique<Lock>(
      QDir(dataFolder).absoluteFilePath(QStringLiteral("corvane-server.lock")));
  return myLock->descriptor < 0 || flock(myLock->descriptor, LOCK_EX | LOCK_NB) == 0 ||
         errno != EWOULDBLOCK;
}

}  // namespace corvane
