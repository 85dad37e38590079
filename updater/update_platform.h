#pragma once

#include <functional>

#include <QObject>
#include <QString>

namespace corvane {

// The parts of an update that depend on the operating system.

// The catalogue's element with the address of this system's installer.
const char* DownloadElement();

// Whether the installer is saved under the file name in its address.
bool DefaultUseActualFilename();

// Asks the system to open the installer, which then runs independently. Calls `done` with the
// outcome at once or within a few seconds from the event loop, unless `asker` is destroyed first.
void LaunchInstaller(const QString& file, QObject& asker, std::function<void(bool started)> done);

}  // namespace corvane
