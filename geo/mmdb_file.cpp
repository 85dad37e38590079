#include "geo/mmdb_file.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QTimeZone>

#include "framework/text.h"

// It includes windows.h on Windows, so no other file includes it.
#include <maxminddb.h>

namespace corvane {
namespace {

// A path to a text in a record: nested keys, ended by a null.
using Path = std::array<const char*, 5>;
constexpr Path kCountryNames[] = {{"country", "names", "en"}, {"country_name"}};
constexpr Path kCountryCodes[] = {{"country", "iso_code"}, {"country_code"}, {"country"}};
constexpr Path kStates[] = {{"subdivisions", "0", "iso_code"},
                            {"subdivisions", "0", "names", "en"},
                            {"state1"},
                            {"region"}};
constexpr Path kCities[] = {{"city", "names", "en"}, {"city"}};
constexpr Path kZips[] = {{"postal", "code"}, {"postcode"}, {"postal_code"}};
constexpr Path kTimeZones[] = {{"location", "time_zone"}, {"timezone"}, {"time_zone"}};

// Reads the texts of one record, up to its first fault.
class Record {
 public:
  explicit Record(const MMDB_entry_s& entry) : myEntry(entry) {}

  // The text at the first path that has one; empty if none has.
  std::string Text(std::span<const Path> paths) {
    for (const Path& path : paths) {
      if (status != MMDB_SUCCESS) break;
      MMDB_entry_data_s data;
      const int found = MMDB_aget_value(&myEntry, &data, path.data());
      if (found == MMDB_LOOKUP_PATH_DOES_NOT_MATCH_DATA_ERROR) continue;
      status = found;
      if (found != MMDB_SUCCESS || !data.has_data) continue;
      if (data.type != MMDB_DATA_TYPE_UTF8_STRING || data.data_size == 0) continue;
      return std::string(
          Beginning({data.utf8_string, data.data_size}, ClientLocation::kMaxTextBytes));
    }
    return {};
  }

  int status = MMDB_SUCCESS;

 private:
  MMDB_entry_s myEntry;
};

// The country with this code; the text itself if it is no code.
std::string CountryOf(const std::string& code) {
  const QLocale::Territory territory = QLocale::codeToTerritory(DisplayText(code));
  if (territory == QLocale::AnyTerritory) return code;
  return TextFromDisplay(QLocale::territoryToString(territory));
}

// Zones that Windows knows only by an older name.
constexpr std::pair<std::string_view, const char*> kOlderZoneNames[] = {
    {"Africa/Asmara", "Africa/Asmera"},
    {"America/Argentina/Buenos_Aires", "America/Buenos_Aires"},
    {"America/Argentina/Catamarca", "America/Catamarca"},
    {"America/Argentina/Cordoba", "America/Cordoba"},
    {"America/Argentina/Jujuy", "America/Jujuy"},
    {"America/Argentina/Mendoza", "America/Mendoza"},
    {"America/Atikokan", "America/Coral_Harbour"},
    {"America/Indiana/Indianapolis", "America/Indianapolis"},
    {"America/Kentucky/Louisville", "America/Louisville"},
    {"America/Nuuk", "America/Godthab"},
    {"Asia/Ho_Chi_Minh", "Asia/Saigon"},
    {"Asia/Kathmandu", "Asia/Katmandu"},
    {"Asia/Kolkata", "Asia/Calcutta"},
    {"Asia/Yangon", "Asia/Rangoon"},
    {"Atlantic/Faroe", "Atlantic/Faeroe"},
    {"Europe/Kyiv", "Europe/Kiev"},
    {"Pacific/Chuuk", "Pacific/Truk"},
    {"Pacific/Kanton", "Pacific/Enderbury"},
    {"Pacific/Pohnpei", "Pacific/Ponape"},
};

QTimeZone ZoneOf(const std::string& name) {
  const QByteArray id = QByteArray::fromStdString(name);
  if (const QTimeZone zone(id); zone.isValid()) return zone;
  const auto* const older =
      std::ranges::find(kOlderZoneNames, name, &std::pair<std::string_view, const char*>::first);
  return older != std::end(kOlderZoneNames) ? QTimeZone(older->second) : QTimeZone("UTC" + id);
}

// Hours and minutes as "+1" or "-3:30", for a name such as "Europe/Oslo" or "+01:00"; empty for
// anything else.
std::string OffsetOf(const std::string& name) {
  // Qt uses the name as a path.
  if (name.empty() || name.find('.') != std::string::npos) return {};
  const QTimeZone zone = ZoneOf(name);
  if (!zone.isValid()) return {};
  const int minutes = zone.offsetFromUtc(QDateTime::currentDateTimeUtc()) / 60;
  std::string text = (minutes < 0 ? "-" : "+") + std::to_string(std::abs(minutes) / 60);
  if (const int rest = std::abs(minutes) % 60; rest != 0) {
    text += (rest < 10 ? ":0" : ":") + std::to_string(rest);
  }
  return text;
}

void SetIfKnown(std::string& field, std::string&& text) {
  if (!text.empty()) field = std::move(text);
}

// Whether the file has IPv6 ranges only.
bool HasNoIPv4(const MMDB_s& database) {
  return database.metadata.ip_version == 6 &&
         database.ipv4_start_node.node_value == database.metadata.node_count;
}

// Whether the file is long enough for the number of nodes in its metadata. libmaxminddb computes
// their size in 32 bits; if a damaged number overflows, it reads far beyond the end of the file.
// https://maxmind.github.io/MaxMind-DB/
bool HoldsItsNodes(const QString& name) {
  constexpr qint64 kMaxDescriptionBytes = 128 << 10;
  constexpr qint64 kMinNodeBytes = 6;
  constexpr QByteArrayView kKey = "node_count";
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly)) return true;
  file.seek(std::max<qint64>(0, file.size() - kMaxDescriptionBytes));
  const QByteArray end = file.readAll();
  for (qsizetype at = end.indexOf(kKey); at >= 0; at = end.indexOf(kKey, at + 1)) {
    const qsizetype value = at + kKey.size();
    if (value == end.size()) break;
    // The low five bits of the byte before a number are its length.
    qint64 count = 0;
    for (const char byte : end.mid(value + 1, std::min(end[value] & 31, 4)))
      count = 256 * count + static_cast<unsigned char>(byte);
    if (count * kMinNodeBytes > file.size()) return false;
  }
  return true;
}

}  // namespace

void MmdbFile::Closing::operator()(MMDB_s* database) const {
  MMDB_close(database);
  delete database;
}

MmdbFile::MmdbFile(const QString& file) {
  auto database = std::make_unique<MMDB_s>();
  const QByteArray name = QFile::encodeName(file);
  const int status = HoldsItsNodes(file)
                         ? MMDB_open(name.constData(), MMDB_MODE_MMAP, database.get())
                         : MMDB_INVALID_METADATA_ERROR;
  if (status != MMDB_SUCCESS) {
    myFault = std::string("not an mmdb file, or not a complete one: ") + MMDB_strerror(status);
    return;
  }
  myDatabase.reset(database.release());
  if (HasNoIPv4(*myDatabase)) myFault = "it has IPv6 addresses only, and clients have IPv4 ones";
}

std::string MmdbFile::Date() const {
  if (!myDatabase) return {};
  const auto seconds = static_cast<qint64>(myDatabase->metadata.build_epoch);
  return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).date().toString(Qt::ISODate).toStdString();
}

std::string MmdbFile::Find(const std::string& address, ClientLocation& location) const {
  if (!myFault.empty()) return {};
  int addressStatus = 0;
  int status = MMDB_SUCCESS;
  const MMDB_lookup_result_s found =
      MMDB_lookup_string(myDatabase.get(), address.c_str(), &addressStatus, &status);
  // Clients of a proxy may have IPv6 addresses, which the file need not know.
  if (addressStatus != 0 || status == MMDB_IPV6_LOOKUP_IN_IPV4_DATABASE_ERROR) return {};
  if (status == MMDB_SUCCESS && found.found_entry) {
    Record record(found.entry);
    std::string country = record.Text(kCountryNames);
    if (country.empty()) country = CountryOf(record.Text(kCountryCodes));
    SetIfKnown(location.country, std::move(country));
    SetIfKnown(location.state, record.Text(kStates));
    SetIfKnown(location.city, record.Text(kCities));
    SetIfKnown(location.zip, record.Text(kZips));
    SetIfKnown(location.timeZone, OffsetOf(record.Text(kTimeZones)));
    status = record.status;
  }
  return status == MMDB_SUCCESS ? std::string() : MMDB_strerror(status);
}

}  // namespace corvane
