#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <QDir>
#include <QFile>

#include "geo/plain_file.h"

namespace corvane {
namespace {

// Whether it is a regular file on a disk and not a link.
bool IsPlain(HANDLE file) {
  BY_HANDLE_FILE_INFORMATION status;
  constexpr DWORD kOther = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  return GetFileType(file) == FILE_TYPE_DISK && GetFileInformationByHandle(file, &status) &&
         (status.dwFileAttributes & kOther) == 0;
}

}  // namespace

// The owner is not checked here: a user's temporary folder is closed to others.
std::optional<QByteArray> ReadPlainFile(const QString& file, std::int64_t maxBytes) {
  const std::wstring path = QDir::toNativeSeparators(file).toStdWString();
  const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
  const int descriptor =
      IsPlain(handle) ? _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_RDONLY) : -1;
  QFile opened;
  if (descriptor < 0) {
    CloseHandle(handle);
    return std::nullopt;
  }
  if (!opened.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
    _close(descriptor);
    return std::nullopt;
  }
  QByteArray bytes = opened.read(maxBytes + 1);
  if (opened.error() != QFileDevice::NoError || bytes.size() > maxBytes) return std::nullopt;
  return bytes;
}

}  // namespace corvane
