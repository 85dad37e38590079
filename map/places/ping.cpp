#include "map/places/ping.h"

#include <cstdlib>

#include <QRegularExpression>

#include "map/places/landmark.h"

namespace corvane::map {

QString ToMessage(const Ping& ping) {
  return QStringLiteral("%1: %2, %3, facet %4")
      .arg(ping.word, QString::number(ping.x), QString::number(ping.y),
           QString::number(ping.facet));
}

std::optional<Ping> ParsePing(const QString& message) {
  constexpr qsizetype kMaxLength = 2 * Ping::kMaxWord + 40;
  if (message.size() > kMaxLength) return std::nullopt;
  // \p{C}: controls, direction marks and what has no meaning.
  static const QRegularExpression kForm(QStringLiteral(
      R"(\A([^:\s\p{C}](?:[^:\p{C}]{0,38}[^:\s\p{C}])?): (-?[0-9]{1,8}), (-?[0-9]{1,8}), )"
      R"(facet (-?[0-9]{1,9})\z)"));
  const QRegularExpressionMatch match = kForm.match(message);
  if (!match.hasMatch()) return std::nullopt;
  const Ping ping{match.captured(1), match.captured(2).toInt(), match.captured(3).toInt(),
                  match.captured(4).toInt()};
  const bool isOnMap =
      std::abs(ping.x) <= Landmark::kMaxCoordinate && std::abs(ping.y) <= Landmark::kMaxCoordinate;
  return isOnMap ? std::optional(ping) : std::nullopt;
}

}  // namespace corvane::map
