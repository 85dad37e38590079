#include "control/backup.h"

#include <chrono>
#include <utility>

#include <QCoreApplication>
#include <QFile>
#include <QPointer>
#include <QSaveFile>
#include <QThreadPool>

#include "framework/text.h"

namespace corvane {
namespace {

QString Unfinished(const QString& file) {
  return file + QStringLiteral(".part");
}

// Copies the file as a whole, onto the disk; what went wrong, or nothing.
std::string CopyDurably(const QString& from, const QString& to) {
  constexpr qint64 kPiece = qint64{1} << 20;
  QFile source(from);
  QSaveFile target(to);
  if (!source.open(QIODevice::ReadOnly)) {
    return TextFromDisplay(from + ": " + source.errorString());
  }
  const auto failed = [&] { return TextFromDisplay(to + ": " + target.errorString()); };
  if (!target.open(QIODevice::WriteOnly)) return failed();
  target.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  while (!source.atEnd()) {
    const QByteArray piece = source.read(kPiece);
    if (piece.isEmpty() || target.write(piece) != piece.size()) return failed();
  }
  return target.commit() ? std::string() : failed();
}

}  // namespace

Backup::Backup(const DatabaseConnection& source, QString settings, QString file,
               std::function<void(const std::string&)> done)
    : mySettings(std::move(settings)),
      myFile(std::move(file)),
      myDone(std::move(done)),
      myCopy(std::in_place, source, Unfinished(myFile)) {
  connect(&mySteps, &QTimer::timeout, this, [this] { Step(); });
  mySteps.start(std::chrono::milliseconds(1));
}

Backup::~Backup() {
  // Windows deletes no file that is open.
  myCopy.reset();
  QFile::remove(Unfinished(myFile));
}

void Backup::Step() {
  const DatabaseBackup::Progress progress = myCopy->Step();
  if (progress == DatabaseBackup::Progress::More) return;
  mySteps.stop();
  if (progress == DatabaseBackup::Progress::Made) {
    Store();
  } else {
    myDone(TextFromDisplay(myFile) + ": " + myCopy->ErrorMessage());
  }
}

void Backup::Store() {
  QThreadPool::globalInstance()->start(
      [settings = mySettings, file = myFile, self = QPointer<Backup>(this)] {
        std::string error = CopyDurably(Unfinished(file), file);
        if (error.empty()) error = CopyDurably(settings, file + QStringLiteral(".xml"));
        // In the thread of the loop, where the object is not deleted between look and call.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, error] {
              if (self) self->myDone(error);
            },
            Qt::QueuedConnection);
      });
}

}  // namespace corvane
