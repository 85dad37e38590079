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

// The desktop chooses a file's program by the name's extension.
bool DefaultUseActualFilename() {
  return true;
}

// The desktop's handler knows the package format and asks for the rights that it needs. It runs in
// a separate session, so it outlives this program and its terminal. If it still runs after three
// seconds, it shows the installer itself and counts as started.
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
    // Deleting it would end its process.
    opener->setParent(nullptr);
    done(true);
  });
  opener->start(QStringLiteral("xdg-open"), {file});
}

}  // namespace corvane
