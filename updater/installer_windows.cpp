#include <string>
#include <windows.h>
// It needs windows.h before it.
#include <shellapi.h>

#include <QDesktopServices>
#include <QDir>
#include <QUrl>

#include "updater/installer.h"

namespace corvane {
namespace {

// ShellExecute says so.
constexpr INT_PTR kLastError = 32;

// Starts the file with elevated rights, after the user was asked for them.
bool RunElevated(const QString& file) {
  const QString path = QDir::toNativeSeparators(file);
  // Looked up, since not every system has the wide one.
  const FARPROC found = GetProcAddress(LoadLibraryW(L"Shell32"), "ShellExecuteW");
  const auto executeWide =
      reinterpret_cast<decltype(&ShellExecuteW)>(reinterpret_cast<void*>(found));
  const HINSTANCE result =
      executeWide != nullptr
          ? executeWide(GetActiveWindow(), L"runas", path.toStdWString().c_str(), nullptr, nullptr,
                        SW_SHOWNORMAL)
          : ShellExecuteA(GetActiveWindow(), "runas", path.toLocal8Bit().constData(), nullptr,
                          nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<INT_PTR>(result) > kLastError;
}

}  // namespace

void LaunchInstaller(const QString& file, QObject& /*asker*/,
                     std::function<void(bool started)> done) {
  const bool isArchive = file.endsWith(QLatin1String("zip"), Qt::CaseInsensitive);
  done(isArchive ? QDesktopServices::openUrl(QUrl::fromLocalFile(file)) : RunElevated(file));
}

}  // namespace corvane
