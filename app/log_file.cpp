#include "app/log_file.h"

#include <algorithm>
#include <utility>

#include <QDir>
#include <QFileInfo>

namespace corvane {

namespace {

using Clock = std::chrono::steady_clock;

constexpr qint64 kMaxBytes = qint64{10} << 20;
constexpr qint64 kMaxRead = qint64{1} << 20;
constexpr int kOlderFiles = 5;
constexpr std::chrono::seconds kPause(1);

// The complete lines in the last 1 MiB of a file.
std::vector<std::string> LinesAtEnd(const QString& name) {
  QFile file(name);
  if (!QFileInfo(name).isFile() || !file.open(QIODevice::ReadOnly)) return {};
  const bool isCut = file.size() > kMaxRead;
  if (isCut) file.seek(file.size() - kMaxRead);
  const std::string bytes = file.read(kMaxRead).toStdString();
  std::vector<std::string> lines;
  std::size_t begin = isCut ? bytes.find('\n') + 1 : 0;
  for (std::size_t end = 0; (end = bytes.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(bytes.substr(begin, end - begin));
  }
  return lines;
}

}  // namespace

LogFile::LogFile(const QString& file)
    : myFile(file), myLines([this](std::string_view bytes) { return Write(bytes); }) {}

StreamWriting LogFile::Write(std::string_view bytes) {
  if (Clock::now() < myNextTry) return {};
  qint64 written = -1;
  if (MakeRoom(bytes.size())) {
    written = myFile.write(bytes.data(), static_cast<qint64>(bytes.size()));
  }
  if (written < static_cast<qint64>(bytes.size())) myNextTry = Clock::now() + kPause;
  if (written <= 0) return {};
  mySize += written;
  myEndsInLine = bytes[static_cast<std::size_t>(written) - 1] != '\n';
  return {.written = static_cast<std::size_t>(written)};
}

// Returns whether the file is open and has room for so many bytes.
bool LogFile::MakeRoom(std::size_t bytes) {
  // It may have been deleted or renamed.
  if (myFile.isOpen() && !QFile::exists(myFile.fileName())) myFile.close();
  if (!myFile.isOpen() && !Open()) return false;
  const auto isFull = [&] { return mySize + static_cast<qint64>(bytes) > kMaxBytes; };
  if (myEndsInLine || !isFull()) return true;
  Rotate();
  return Open() && !isFull();
}

bool LogFile::Open() {
  const QFileInfo place(myFile.fileName());
  QDir().mkdir(place.absolutePath());
  // Anything but a regular file (a pipe, say) might never take a byte.
  if (place.exists() && !place.isFile()) return false;
  if (!myFile.open(QIODevice::Append | QIODevice::Unbuffered,
                   QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
    return false;
  }
  mySize = myFile.size();
  myEndsInLine = false;
  return true;
}

void LogFile::Rotate() {
  myFile.close();
  QFile::remove(Older(kOlderFiles));
  for (int number = kOlderFiles; number > 1; --number)
    QFile::rename(Older(number - 1), Older(number));
  QFile::rename(myFile.fileName(), Older(1));
}

QString LogFile::Older(int number) const {
  return myFile.fileName() + '.' + QString::number(number);
}

void LogFile::Reopen() {
  myLines.WriteKept();
  myFile.close();
}

std::vector<std::string> LogFile::Last(std::size_t count) {
  myLines.WriteKept();
  std::vector<std::string> lines = LinesAtEnd(myFile.fileName());
  if (lines.size() < count) {
    std::vector<std::string> older = LinesAtEnd(Older(1));
    older.insert(older.end(), lines.begin(), lines.end());
    lines = std::move(older);
  }
  if (lines.size() > count) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
  }
  return lines;
}

}  // namespace corvane
