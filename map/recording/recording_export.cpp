#include "map/recording/recording_export.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include "framework/visible_text.h"
#include "map/recording/player.h"

namespace corvane::map {
namespace {

using client::Member;
using client::Report;
using std::chrono::duration_cast;
using std::chrono::milliseconds;

struct ExportTexts {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::Export)
};

QString TimeOf(const Member& member) {
  const auto time = duration_cast<milliseconds>(member.news.time_since_epoch()).count();
  return QDateTime::fromMSecsSinceEpoch(time, Qt::UTC).toString(Qt::ISODateWithMs);
}

// Spreadsheets take what begins with one of these characters for a formula, some also the wide
// ones.
QString Quoted(QString text) {
  static const QString kSigns = QStringLiteral("=+-@\uff1d\uff0b\uff0d\uff20");
  if (!text.isEmpty() && kSigns.contains(text[0])) text.prepend('\'');
  return '"' + text.replace('"', QLatin1String("\"\"")) + '"';
}

QByteArray CsvLine(const Member& member) {
  const Report& report = member.report;
  return QStringLiteral("%1,%2,%3,%4,%5,%6,%7,%8\r\n")
      .arg(TimeOf(member), Quoted(VisibleText(member.name)))
      .arg(report.x)
      .arg(report.y)
      .arg(report.facet)
      .arg(report.hp)
      .arg(int{report.inBattle})
      .arg(int{report.isDead})
      .toUtf8();
}

QByteArray Feature(const Member& member) {
  const Report& report = member.report;
  const QJsonObject feature{
      {"type", "Feature"},
      {"geometry", QJsonObject{{"type", "Point"}, {"coordinates", QJsonArray{report.x, report.y}}}},
      {"properties", QJsonObject{{"time", TimeOf(member)},
                                 {"name", VisibleText(member.name)},
                                 {"facet", report.facet},
                                 {"hitPoints", report.hp},
                                 {"inBattle", report.inBattle},
                                 {"dead", report.isDead}}}};
  return QJsonDocument(feature).toJson(QJsonDocument::Compact);
}

// Writes the reports that it sees.
class Writer : public client::MembersWatcher {
 public:
  Writer(QSaveFile& file, bool isGeoJson) : myFile(file), myIsGeoJson(isGeoJson) {
    myFile.write(myIsGeoJson ? "{\"type\":\"FeatureCollection\",\"features\":["
                             : "time,name,x,y,facet,hitPoints,inBattle,dead\r\n");
  }
  void End() { myFile.write(myIsGeoJson ? "\n]}\n" : ""); }

  void Added(const Member& member) override { Changed(member); }
  void Changed(const Member& member) override {
    if (!member.hasPlace) return;
    if (myIsGeoJson) myFile.write(std::exchange(myHasFeature, true) ? ",\n" : "\n");
    myFile.write(myIsGeoJson ? Feature(member) : CsvLine(member));
  }
  void Removed(const Member&) override {}

 private:
  QSaveFile& myFile;
  bool myIsGeoJson;
  bool myHasFeature = false;
};

}  // namespace

QString Export(const Recording& recording, const QString& path, const std::stop_token& stops,
               const std::function<void(int percent)>& progress) {
  QSaveFile file(path);
  if (!file.open(QSaveFile::WriteOnly)) return file.errorString();
  Writer writer(file, path.endsWith(QLatin1String(".geojson"), Qt::CaseInsensitive));
  client::Members members;
  members.Watch(writer);
  Player player(recording, members);
  const qint64 duration = std::max<qint64>(1, recording.End() - recording.Begin());
  int percent = -1;
  while (const auto next = player.NextTime()) {
    if (stops.stop_requested()) return {};
    player.PlayTo(*next);
    const int now = static_cast<int>((*next - recording.Begin()) * 100 / duration);
    if (now != percent) progress(percent = now);
  }
  writer.End();
  if (!file.commit()) return file.errorString();
  return player.IsDamaged() ? ExportTexts::tr(
                                  "The recording is damaged. Only what comes before "
                                  "the damage was written.")
                            : QString();
}

}  // namespace corvane::map
