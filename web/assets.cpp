#include "web/assets.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace corvane::web {
namespace {

struct Named {
  const char* name;
  const char* type;
};
constexpr const char* kScript = "text/javascript; charset=utf-8";
constexpr const char* kStyle = "text/css; charset=utf-8";
constexpr Named kOurs[] = {{"index.html", "text/html; charset=utf-8"},
                           {"map.js", kScript},
                           {"map.css", kStyle},
                           {"icon.svg", "image/svg+xml"}};
constexpr Named kLeaflets[] = {{"leaflet.esm.min.js", kScript}, {"leaflet.css", kStyle}};

// Beside the program, as on Windows, or where Debian's libjs-leaflet puts it.
QString LeafletFolder() {
  const QString beside = QCoreApplication::applicationDirPath() + "/leaflet/";
  return QFileInfo::exists(beside) ? beside : QStringLiteral("/usr/share/javascript/leaflet/");
}

}  // namespace

Assets LoadAssets(QString& error) {
  Assets assets;
  const auto load = [&](const QString& folder, const Named& named) {
    QFile file(folder + named.name);
    if (!file.open(QIODevice::ReadOnly)) error = file.fileName() + ": " + file.errorString();
    assets[named.name] = {file.readAll().toStdString(), named.type};
  };
  for (const Named& ours : kOurs)
    load(":/page/", ours);
  for (const Named& leaflets : kLeaflets)
    load(LeafletFolder(), leaflets);
  return assets;
}

}  // namespace corvane::web
