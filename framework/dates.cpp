#include "framework/dates.h"

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

std::string ShortDateAndTime(const QDateTime& date) {
  if (!date.isValid()) return {};
  const QLocale locale;
  const QDateTime local = date.toLocalTime();
  return (locale.toString(local.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
          locale.toString(local.time(), QLocale::ShortFormat))
      .toStdString();
}

}  // namespace corvane
