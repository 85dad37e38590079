#pragma once

#include <functional>

#include <QObject>
#include <QString>

namespace corvane {

// What differs between operating systems for an update.

// Name of the catalogue's element with the address of this system's installer.
const char* DownloadElement();

// Whether the installer keeps the file name that it has in its address.
bool DefaultUseActualFilename();

// Hands the installer in that file to the system, which goes on by itself. `done` is told whether
// it took it, at once or from the event loop a few seconds later at most, unless `asker` is gone
// by then.
void LaunchInstaller(const QString& file, QObject& asker, std::function<void(bool started)> done);

}  // namespace corvane
