#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QScreen>
#include <QStandardPaths>

#include "map/map_window.h"
#include "map/options.h"
#include "map/readable_controls.h"
#include "map/running_map.h"
#include "platform/caller.h"
#include "platform/choose_platform.h"
#include "platform/folders.h"
#include "platform/prepare_process.h"
#include "platform/process_signals.h"
#include "platform/qt_noise.h"
#include "updater/version.h"

using namespace corvane;
using namespace corvane::map;

namespace {

QIcon MapIcon() {
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256})
    icon.addFile(QStringLiteral(":/icons/corvane-map-%1.png").arg(size), QSize(size, size));
  return icon;
}

}  // namespace

int main(int argc, char** argv) {
  PrepareProcess();
  DropQtNoise();
  const bool mayLackDisplay = ChoosePlatform(argc, argv);
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("corvane-map"));
  QApplication::setApplicationDisplayName(QStringLiteral("Corvane Map"));
  QApplication::setApplicationVersion(QString::fromStdString(RunningVersion().FullVersion()));
  QApplication::setDesktopFileName(QStringLiteral("corvane-map"));
  QApplication::setWindowIcon(MapIcon());

  const ParsedOptions parsed =
      ParseOptions(QApplication::arguments(), qgetenv("CORVANE_MAP_PASSWORD"));
  if (!parsed.options) {
    AnswerOnConsole(parsed.answer);
    return parsed.answer.exitCode;
  }
  if (mayLackDisplay && QApplication::platformName() == "offscreen") {
    AnswerOnConsole({QStringLiteral("there is no display"), 1});
    return 1;
  }
  const std::optional<QString> data = ApplicationDataFolder();
  const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
  if (!data || cache.isEmpty()) {
    AnswerOnConsole({QStringLiteral("there is no folder for its settings"), 1});
    return 1;
  }
  const ReadablePlaceholders placeholders(application);
  QApplication::setStyle(new VisibleBoxes);
  const QString& place = parsed.options->place;
  if (!place.isEmpty() && RunningMap::HandOver(*data, place)) return 0;
  MapWindow window(*data + QStringLiteral("/Corvane Map.ini"), cache + QStringLiteral("/tiles"));
  const ProcessSignals signals([&window] { window.close(); });
  RunningMap running(*data);
  running.PlaceReceived = [&window](const QString& other) { window.OpenPlace(other); };
  // With large scales the screen may be smaller than the window's first size.
  const bool fits = window.size() == window.size().boundedTo(window.screen()->availableSize());
  fits ? window.show() : window.showMaximized();
  if (parsed.options->server) {
    window.LoginTo(*parsed.options->server);
  } else if (!place.isEmpty()) {
    window.OpenPlace(place);
  } else {
    window.AskWhere();
  }
  if (parsed.options->picture) window.SetPicture(0, *parsed.options->picture);
  return QApplication::exec();
}
