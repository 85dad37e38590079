#include "app/write_faults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include "framework/text.h"
#include "storage/app_settings.h"

namespace corvane {
namespace {

// Tries it, since permissions are not enough: the file system may be read-only.
bool TakesNewFiles(const QString& folder) {
  QTemporaryFile probe(QDir(folder).absoluteFilePath(QStringLiteral("corvane-XXXXXX")));
  return probe.open();
}

// Whether the file can be changed, or can be made together with its folders.
bool CanBeWritten(const QString& file) {
  const QFileInfo place(file);
  if (place.isFile()) return QFile(file).open(QIODevice::ReadWrite);
  if (place.exists()) return false;
  const QFileInfo folder(place.absolutePath());
  return folder.exists() ? TakesNewFiles(folder.filePath()) : CanBeWritten(folder.filePath());
}

}  // namespace

std::vector<std::string> WriteFaults(const QString& dataFolder) {
  std::vector<std::string> faults;
  const auto add = [&](const char* what, const QString& file, const char* outcome) {
    faults.push_back(what + (": " + TextFromDisplay(QDir::toNativeSeparators(file))) +
                     " cannot be written to. " + outcome);
  };
  const QDir folder(dataFolder);
  const QString log = folder.absoluteFilePath(QStringLiteral("logs/corvane-server.log"));
  if (!CanBeWritten(log)) {
    add("There is no log", log, "Standard output has the status lines.");
  }
  const QString settings = *AppSettings(dataFolder).File();
  if (!CanBeWritten(settings))
    add("Settings are not kept", settings, "Changes to settings are lost.");
  const QString database = folder.absoluteFilePath(QStringLiteral("serverdb.rsd"));
  const QString where = TakesNewFiles(dataFolder) ? database : folder.absolutePath();
  if (QFileInfo::exists(database) && (where != database || !CanBeWritten(database))) {
    add("The database cannot be changed", where,
        "Networks and bans count until the server ends; administrators cannot be changed, nor "
        "bans lifted.");
  }
  return faults;
}

}  // namespace corvane
