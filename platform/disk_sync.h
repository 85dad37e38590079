#pragma once

#include <QFile>

namespace corvane {

// Flushes the open file to the disk, on Linux with its folder's entry. Returns whether it worked.
bool SyncToDisk(QFile& file);

// On Linux, flushes the whole file system of the folder, which may take seconds.
void SyncFileSystem(const QString& folder);

}  // namespace corvane
