#include <chrono>
#include <unistd.h>
#include <utility>

#include <QProcess>
#include <QTimer>

#include "updater/update_platform.h"

namespace corvane {

const char* DownloadElement() {
  return "LinuxDownload";
}

// The desktop tells by the ending of the name what to do with a file.
bool DefaultUseActualFilename() {
  return true;
}

// The desktop's own handler knows the package's format and asks for the rights that it needs. It
// runs in a session of its own, so that it outlives this program and its terminal. If it is still
// there after three seconds, it shows the installer itself.
void LaunchInstaller(const QString& file, QObject& asker, std::function<void(bool started)> done) {
  auto* opener = new QProcess(&asker);
  opener->setChildProcessModifier([] { setsid(); });
  opener->setStandardInputFile(QProcess::nullDevice());
  opener->setStandardOutputFile(QProcess::nullDevice());
  opener->setProcessChannelMode(QProcess::ForwardedErrorChannel);
  QObject::connect(opener, &QProcess::finished, opener,
                   [done](int code, QProcess::ExitStatus status) {
                     done(status == QProcess::NormalExit && code == 0);
                   });
  QObject::connect(opener, &QProcess::errorOccurred, opener, [done](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) done(false);
  });
  QTimer::singleShot(std::chrono::seconds(3), opener, [opener, done = std::move(done)] {
    if (opener->state() == QProcess::NotRunning) return;
    opener->disconnect();
    QObject::connect(opener, &QProcess::finished, opener, &QObject::deleteLater);
    // What deletes it ends its process.
    opener->setParent(nullptr);
    done(true);
  });
  opener->start(QStringLiteral("xdg-open"), {file});
}

}  // namespace corvane
