#include "framework/dates.h"

#include <array>
#include <charconv>

#include <QLocale>

#include "framework/text.h"

namespace corvane {
namespace {

const QString kStoredForm = QStringLiteral("yyyy-MM-dd HH:mm:ss");

}  // namespace

std::string StoredDate(const QDateTime& date) {
  return date.toLocalTime().toString(kStoredForm).toStdString();
}

QDateTime DateFromStored(std::string_view text) {
  return QDateTime::fromString(DisplayText(text), Qt::ISODate);
}

std::string StoredUtc(const QDateTime& date) {
  return date.toUTC().toString(kStoredForm).toStdString();
}

QDateTime UtcFromStored(std::string_view text) {
  return DateFromStored(std::string(text) + 'Z');
}

std::optional<std::int64_t> SecondsFromText(std::string_view text) {
  constexpr std::int64_t kMax = std::int64_t{3653} * 24 * 3600;  // ten years
  constexpr std::string_view kUnits = "smhdw";
  constexpr std::array<std::int64_t, 5> kSeconds = {1, 60, 3600, 86'400, 604'800};
  std::int64_t count = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, count);
  const auto unit = stop + 1 == end ? kUnits.find(*stop) : std::string_view::npos;
  const bool isTime = error == std::errc() && unit != std::string_view::npos && count >= 1 &&
                      count <= kMax / kSeconds[unit];
  if (!isTime) return std::nullopt;
  return count * kSeconds[unit];
}

std::string ShortDateAndTime(const QDateTime& date) {
  if (!date.isValid()) return {};
  const QLocale locale;
  const QDateTime local = date.toLocalTime();
  return (locale.toString(local.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
          locale.toString(local.time(), QLocale::ShortFormat))
      .toStdString();
}

}  // namespace corvane
