#include <string>
#include <windows.h>
// It needs windows.h before it.
#include <shellapi.h>

#include <QDir>

#include "updater/update_platform.h"

namespace corvane {

const char* DownloadElement() {
  return "WinDownload";
}

bool DefaultUseActualFilename() {
  return false;
}

// Opens an archive; starts any other file with elevated rights, for which Windows asks the user.
void LaunchInstaller(const QString& file, QObject& /*asker*/,
                     std::function<void(bool started)> done) {
  // ShellExecute returns a greater value on success.
  constexpr INT_PTR kLastError = 32;
  const QString path = QDir::toNativeSeparators(file);
  const bool isArchive = file.endsWith(QLatin1String("zip"), Qt::CaseInsensitive);
  const QString verb = isArchive ? QStringLiteral("open") : QStringLiteral("runas");
  // Looked up at run time, since not every system has the wide one.
  const FARPROC found = GetProcAddress(LoadLibraryW(L"Shell32"), "ShellExecuteW");
  const auto executeWide =
      reinterpret_cast<decltype(&ShellExecuteW)>(reinterpret_cast<void*>(found));
  const HINSTANCE result =
      executeWide != nullptr
          ? executeWide(GetActiveWindow(), verb.toStdWString().c_str(), path.toStdWString().c_str(),
                        nullptr, nullptr, SW_SHOWNORMAL)
          : ShellExecuteA(GetActiveWindow(), verb.toLatin1().constData(),
                          path.toLocal8Bit().constData(), nullptr, nullptr, SW_SHOWNORMAL);
  done(reinterpret_cast<INT_PTR>(result) > kLastError);
}

}  // namespace corvane
