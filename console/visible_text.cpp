#include "console/visible_text.h"

#include <algorithm>
#include <utility>

#include "framework/text.h"

namespace corvane {
namespace {

// Whether the character would break the line, draw nothing or rearrange its neighbours.
bool IsInvisible(QChar character) {
  const char16_t code = character.unicode();
  const bool turnsDirection =
      (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return true;
    default:
      return turnsDirection;
  }
}

void AppendWrittenOut(QString& result, QChar character) {
  const char16_t code = character.unicode();
  if (code == u'\n') {
    result += u"\\n";
  } else if (code == u'\r') {
    result += u"\\r";
  } else if (code == u'\t') {
    result += u"\\t";
  } else if (code < 0x100) {
    result += QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'));
  } else {
    result += QStringLiteral("\\u%1").arg(code, 4, 16, QLatin1Char('0'));
  }
}

// At most `maxBytes` of the text, not ending inside a UTF-8 sequence.
std::string_view Start(std::string_view text, std::size_t maxBytes) {
  if (text.size() <= maxBytes) return text;
  std::size_t end = maxBytes;
  for (int step = 0; step < 3 && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80;
       ++step) {
    --end;
  }
  return text.substr(0, end);
}

}  // namespace

QString VisibleText(std::string_view text, std::size_t maxLength) {
  // A character takes at most four bytes, so this much is always enough.
  const std::string_view start = Start(text, (maxLength + 1) * 4);
  QString shown = DisplayText(start);
  const auto limit = static_cast<qsizetype>(maxLength);
  const bool isPlain = std::none_of(shown.cbegin(), shown.cend(), IsInvisible);
  if (isPlain && shown.size() <= limit) return shown;

  QString result;
  for (const QChar character : std::as_const(shown)) {
    if (result.size() >= limit) break;
    if (IsInvisible(character)) {
      AppendWrittenOut(result, character);
    } else {
      result += character;
    }
  }
  if (shown.size() > limit || result.size() > limit) {
    result.truncate(limit);
    if (result.back().isHighSurrogate()) result.chop(1);
    result += QChar(0x2026);
  }
  return result;
}

}  // namespace corvane
