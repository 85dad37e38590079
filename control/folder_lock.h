#pragma once

#include <memory>

#include <QString>

namespace corvane {

// The right to be the only server of a data folder. Ends when the object is destroyed, or with the
// process even if it crashes.
class FolderLock {
 public:
  FolderLock();
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  // Returns false if another server has the lock, and true if the folder does not support locks.
  bool Take(const QString& dataFolder);

 private:
  struct Lock;
  std::unique_ptr<Lock> myLock;
};

}  // namespace corvane
