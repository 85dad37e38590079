#include "control/backup.h"

#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QStringList>
#include <QTemporaryFile>
#include <QThreadPool>

#include "framework/text.h"
#include "platform/disk_sync.h"
#include "storage/database_connection.h"

namespace corvane {
namespace {

QString SettingsPlace(const QString& file) {
  return file + QStringLiteral(".xml");
}

std::string ErrorOf(const QFileDevice& file) {
  return TextFromDisplay(file.fileName() + ": " + file.errorString());
}

// Opens a new file beside that one, readable by its owner only.
void OpenBeside(QTemporaryFile& beside, const QString& file) {
  beside.setFileTemplate(file + QStringLiteral(".XXXXXX"));
  beside.open();
}

// Syncs a finished copy to disk and gives it its name. Returns the error, or nothing.
std::string Publish(const QString& copy, const QString& file, bool overwrites) {
  QFile written(copy);
  if (!written.open(QIODevice::ReadWrite) || !SyncToDisk(written)) return ErrorOf(written);
  written.close();
  if (!overwrites) return written.rename(file) ? std::string() : ErrorOf(written);
  std::error_code error;
  std::filesystem::rename(QFileInfo(copy).filesystemFilePath(),
                          QFileInfo(file).filesystemFilePath(), error);
  return error ? TextFromDisplay(file) + ": " + error.message() : std::string();
}

std::string CopySettings(const QString& from, const QString& to, bool overwrites) {
  QFile source(from);
  if (!source.open(QIODevice::ReadOnly)) return ErrorOf(source);
  const QByteArray content = source.readAll();
  QString name;
  {
    QTemporaryFile copy;
    OpenBeside(copy, to);
    if (copy.write(content) != content.size() || !copy.flush()) return ErrorOf(copy);
    copy.setAutoRemove(false);
    name = copy.fileName();
  }  // Only its end closes the file, and Windows does not rename an open one.
  std::string error = Publish(name, to, overwrites);
  if (!error.empty()) QFile::remove(name);
  return error;
}

// Compares canonical paths, as a folder may have several names.
bool IsUsedByServer(const QFileInfo& place, const QFileInfo& database,
                    const Backup::Places& places) {
  const QDir data = database.dir();
  const QString locations = data.absoluteFilePath(places.locations);
  if (place.exists() && place == QFileInfo(locations)) return true;
  const QString folder = place.dir().canonicalPath();
  if (folder.isEmpty()) return false;
  if (folder == QDir(data.filePath(QStringLiteral("logs"))).canonicalPath()) return true;
  if (folder != data.canonicalPath()) return false;
  const QString settings = QFileInfo(places.settings).fileName();
  const QStringList used = {database.fileName(),
                            database.fileName() + "-journal",
                            database.fileName() + "-wal",
                            database.fileName() + "-shm",
                            settings,
                            settings + ".broken",
                            QStringLiteral("corvane-bans.waiting"),
                            QStringLiteral("corvane-ranges.waiting"),
                            QStringLiteral("corvane-server.lock")};
  return used.contains(place.fileName(), Qt::CaseInsensitive);
}

}  // namespace

std::string Backup::WhyNot(const DatabaseConnection& source, const Places& places) {
  for (const QString& target : {places.file, SettingsPlace(places.file)}) {
    const QFileInfo place(target);
    const std::string name = TextFromDisplay(target);
    if (IsUsedByServer(place, QFileInfo(source.File()), places)) {
      return "the server itself uses " + name;
    }
    if (!place.exists() && !place.isSymLink()) continue;
    if (place.isSymLink() || !place.isFile()) return "not a regular file: " + name;
    if (!places.overwrites) return "there is already a file " + name;
  }
  return {};
}

Backup::Backup(const DatabaseConnection& source, Places places,
               std::function<void(const std::string&)> done)
    : myPlaces(std::move(places)), myDone(std::move(done)) {
  QTemporaryFile unfinished;
  OpenBeside(unfinished, myPlaces.file);
  if (unfinished.isOpen()) {
    unfinished.setAutoRemove(false);
    myUnfinished = unfinished.fileName();
    unfinished.close();
    myCopy.emplace(source, myUnfinished);
  } else {
    myError = unfinished.errorString().toStdString();
  }
  connect(&mySteps, &QTimer::timeout, this, [this] { Step(); });
  mySteps.start(std::chrono::milliseconds(1));
}

Backup::~Backup() {
  // Windows cannot delete an open file.
  myCopy.reset();
  QFile::remove(myUnfinished);
}

void Backup::Step() {
  const auto progress = myCopy ? myCopy->Step() : DatabaseBackup::Progress::Failed;
  if (progress == DatabaseBackup::Progress::More) return;
  mySteps.stop();
  if (progress == DatabaseBackup::Progress::Made) {
    Store();
  } else {
    myDone(TextFromDisplay(myPlaces.file) + ": " + (myCopy ? myCopy->ErrorMessage() : myError));
  }
}

void Backup::Store() {
  QThreadPool::globalInstance()->start(
      [places = myPlaces, copy = myUnfinished, self = QPointer<Backup>(this)] {
        std::string error = Publish(copy, places.file, places.overwrites);
        if (error.empty()) {
          error = CopySettings(places.settings, SettingsPlace(places.file), places.overwrites);
        }
        // On the loop's thread, so the object cannot go between the check and the call.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, error] {
              if (self) self->myDone(error);
            },
            Qt::QueuedConnection);
      });
}

}  // namespace corvane
