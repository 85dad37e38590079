#pragma once

#include <functional>

#include <QObject>
#include <QString>

namespace corvane {

// Hands the installer in that file to the system, which goes on by itself. `done` is told whether
// it took it, at once or from the event loop a few seconds later at most; it is told nothing any
// more once `asker` is gone.
void LaunchInstaller(const QString& file, QObject& asker, std::function<void(bool started)> done);

}  // namespace corvane
