#include "map/coordinates.h"

#include <cmath>

#include <QRegularExpression>

#include "map/marker_board.h"

namespace corvane::map {

std::optional<Coordinates> ParseCoordinates(const QString& text) {
  static const QRegularExpression form(
      QStringLiteral(R"(^[\s([]*(?:x\s*[:=]?\s*)?([-+]?\d{1,9})(?:\.\d+)?(?:\s*[,;/|]\s*|\s+))"
                     R"((?:y\s*[:=]?\s*)?([-+]?\d{1,9})(?:\.\d+)?)"
                     R"((?:(?:\s*[,;/|]\s*|\s+)(?:(?:facet|f)\s*[:=]?\s*)?(-?\d{1,9}))?[\s)\]]*$)"),
      QRegularExpression::CaseInsensitiveOption);
  QString plain = text;
  plain.replace(QChar(0x2212), '-');  // the minus sign that typesetters use
  const QRegularExpressionMatch match = form.match(plain);
  if (!match.hasMatch()) return std::nullopt;
  Coordinates found{{match.captured(1).toInt(), match.captured(2).toInt()}};
  if (std::abs(found.at.x()) > kMaxCoordinate || std::abs(found.at.y()) > kMaxCoordinate)
    return std::nullopt;
  if (match.hasCaptured(3)) found.facet = match.captured(3).toInt();
  return found;
}

QString CoordinatesText(int x, int y) {
  return QStringLiteral("%1, %2").arg(x).arg(y);
}

}  // namespace corvane::map
