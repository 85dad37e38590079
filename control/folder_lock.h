#pragma once

#include <memory>

#include <QString>

namespace corvane {

// The right to be the one server of a data folder. It lasts as long as the object, and no longer
// than the process.
class FolderLock {
 public:
  FolderLock();
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  // False where another server has it. True, too, where the folder takes no lock: nothing is known
  // of others then.
  bool Take(const QString& dataFolder);

 private:
  struct Lock;
  std::unique_ptr<Lock> myLock;
};

}  // namespace corvane
