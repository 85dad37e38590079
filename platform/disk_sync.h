#pragma once

#include <QFile>

namespace corvane {

// Flushes the open file to the disk, on Linux with its folder's entry. Returns whether it worked.
bool SyncToDisk(QFile& file);

}  // namespace corvane
