#include "geo/location_database.h"

#include <chrono>
#include <utility>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QTemporaryDir>
#include <QThreadPool>

#include "framework/text.h"
#include "geo/mmdb_file.h"

namespace corvane {
namespace {

constexpr std::chrono::seconds kCheckInterval(5);

// Returns what went wrong, or nothing.
std::string CopyFile(const QString& from, const QString& to) {
  constexpr qint64 kPiece = qint64{1} << 20;
  QFile source(from);
  QFile target(to);
  const auto failed = [](const QFile& file) {
    return TextFromDisplay(file.fileName() + ": " + file.errorString());
  };
  if (!source.open(QIODevice::ReadOnly)) return TextFromDisplay(source.errorString());
  if (!target.open(QIODevice::WriteOnly)) return failed(target);
  for (QByteArray piece; !(piece = source.read(kPiece)).isEmpty();) {
    if (target.write(piece) != piece.size()) return failed(target);
  }
  if (source.error() != QFileDevice::NoError) return TextFromDisplay(source.errorString());
  return target.flush() ? std::string() : failed(target);
}

}  // namespace

struct LocationDatabase::Copy {
  Copy(QTemporaryDir&& its, const QString& name) : folder(std::move(its)), file(name) {}

  QTemporaryDir folder;
  MmdbFile file;
};

LocationDatabase::LocationDatabase(QString file, QString temporaryFolder, Log log)
    : myFile(std::move(file)),
      myTemporaryFolder(std::move(temporaryFolder)),
      myLog(std::move(log)),
      myState(StateOf(myFile)) {
  Take(Read(myFile, myTemporaryFolder));
  connect(&myCheckTimer, &QTimer::timeout, this, [this] { CheckFile(); });
  myCheckTimer.start(kCheckInterval);
}

LocationDatabase::~LocationDatabase() = default;

void LocationDatabase::Find(const std::string& address, ClientLocation& location) {
  if (!myCopy) return;
  const std::string fault = myCopy->file.Find(address, location);
  if (fault.empty() || std::exchange(myHasLoggedBadData, true)) return;
  myLog("Location database: the file is damaged: " + fault);
}

void LocationDatabase::CheckFile() {
  State state = StateOf(myFile);
  if (myIsReading || state == myState) return;
  myState = std::move(state);
  myIsReading = true;
  QThreadPool::globalInstance()->start(
      [file = myFile, folder = myTemporaryFolder, self = QPointer<LocationDatabase>(this)] {
        // On the loop's thread, so the object cannot be deleted between check and call.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, reading = Read(file, folder)] {
              if (self) self->Take(reading);
            },
            Qt::QueuedConnection);
      });
}

LocationDatabase::State LocationDatabase::StateOf(const QString& file) {
  const QFileInfo info(file);
  return {info.isFile(), info.size(), info.lastModified()};
}

LocationDatabase::Reading LocationDatabase::Read(const QString& file,
                                                 const QString& temporaryFolder) {
  // Other files, such as a pipe, may never end.
  if (!QFileInfo(file).isFile()) return {nullptr, "there is no such file"};
  QTemporaryDir folder(temporaryFolder + "/corvane-location-XXXXXX");
  if (!folder.isValid()) {
    return {nullptr, TextFromDisplay(temporaryFolder + ": " + folder.errorString())};
  }
  const QString name = folder.filePath("copy.mmdb");
  if (std::string fault = CopyFile(file, name); !fault.empty()) return {nullptr, std::move(fault)};
  auto copy = std::make_shared<Copy>(std::move(folder), name);
  // If the system allows it: nothing is left behind even if the program is killed.
  QFile::remove(name);
  if (!copy->file.Fault().empty()) return {nullptr, copy->file.Fault()};
  return {std::move(copy), {}};
}

void LocationDatabase::Take(Reading reading) {
  myIsReading = false;
  const std::string name = TextFromDisplay(myFile);
  if (reading.copy) {
    myCopy = std::move(reading.copy);
    myHasLoggedBadData = false;
    myLog("Location database: " + name + " of " + myCopy->file.Date());
  } else {
    myLog("Location database: " + name + ": " + reading.fault +
          (myCopy ? "; the previous one stays in use" : "; no location is known"));
  }
}

}  // namespace corvane
