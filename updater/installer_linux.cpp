#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include <QByteArray>
#include <QFile>
#include <QTimerEvent>

#include "updater/installer.h"

namespace corvane {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{50};
constexpr int kMostLooks = 60;

// Waits for what was started to end, for three seconds: a program of the desktop that is still
// there after them shows the installer itself.
class Opening : public QObject {
 public:
  Opening(pid_t process, QObject& asker, std::function<void(bool)> done)
      : QObject(&asker), myProcess(process), myDone(std::move(done)) {
    startTimer(kBetweenLooks);
  }

 protected:
  void timerEvent(QTimerEvent* event) override {
    int status = 0;
    const pid_t ended = waitpid(myProcess, &status, WNOHANG);
    if (ended == 0 && --myLooksLeft > 0) return;
    killTimer(event->timerId());
    deleteLater();
    const auto done = std::move(myDone);
    done(ended == 0 || (ended == myProcess && WIFEXITED(status) && WEXITSTATUS(status) == 0));
  }

 private:
  const pid_t myProcess;
  std::function<void(bool)> myDone;
  int myLooksLeft = kMostLooks;
};

// Starts xdg-open on the file, in a session of its own, so that it outlives this program and its
// terminal, and with the signals that this program ignores as they were. -1 where there is none.
pid_t StartOpening(const QByteArray& file) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO})
    posix_spawn_file_actions_addopen(&files, standard, "/dev/null", O_RDWR, 0);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t ignored;
  sigemptyset(&ignored);
  sigaddset(&ignored, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &ignored);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF);

  char program[] = "xdg-open";
  QByteArray argument = file;
  char* const arguments[] = {program, argument.data(), nullptr};
  pid_t process = -1;
  const int error = posix_spawnp(&process, program, &files, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return error == 0 ? process : -1;
}

}  // namespace

// The desktop's own handler knows the package's format and asks for the rights that it needs.
void LaunchInstaller(const QString& file, QObject& asker, std::function<void(bool started)> done) {
  const pid_t process = StartOpening(QFile::encodeName(file));
  if (process < 0) return done(false);
  new Opening(process, asker, std::move(done));
}

}  // namespace corvane
