#pragma once

#include <QFile>

namespace corvane {

// Has the system bring the open file onto the disk, and on Linux the folder's entry of it too.
bool SyncToDisk(QFile& file);

}  // namespace corvane
