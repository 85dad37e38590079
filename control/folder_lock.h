#pragma once

#include <memory>

#include <QString>

namespace corvane {

// The right to be the only server of a data folder. Lasts as long as the object, and ends with the
// process even if that crashes.
class FolderLock {
 public:
  FolderLock();
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  // Returns false if another server has it. Returns true also if the folder does not support locks.
  bool Take(const QString& dataFolder);

 private:
  struct Lock;
  std::unique_ptr<Lock> myLock;
};

}  // namespace corvane
