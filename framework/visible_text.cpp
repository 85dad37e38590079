#include "framework/visible_text.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include <QList>

#include "framework/text.h"

namespace corvane {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Characters that draw nothing though they count as letters, marks or symbols, among them those
// that Unicode sets aside for more of their kind. In ascending order.
constexpr Range kBlankLetters[] = {
    {0x034F, 0x034F}, {0x115F, 0x1160}, {0x17B4, 0x17B5},   {0x180B, 0x180F},  {0x2060, 0x206F},
    {0x2800, 0x2800}, {0x3164, 0x3164}, {0xFDD0, 0xFDEF},   {0xFE00, 0xFE0F},  {0xFFA0, 0xFFA0},
    {0xFFF0, 0xFFF8}, {0xFFFE, 0xFFFF}, {0x1D159, 0x1D159}, {0xE0000, 0xE0FFF}};

constexpr char kDelete = 0x7F;

bool IsPlain(char byte) {
  return byte >= ' ' && byte < kDelete && byte != '\\';
}

bool IsPlain(std::string_view text) {
  return std::ranges::all_of(text, [](char byte) { return IsPlain(byte); });
}

bool IsInvisible(char32_t character) {
  if (character < kDelete) return character < U' ';
  switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
    case QChar::Separator_Space:
      return true;
    default:
      break;
  }
  const auto* range = std::ranges::lower_bound(kBlankLetters, character, {}, &Range::last);
  return range != std::end(kBlankLetters) && character >= range->first;
}

QString Hexadecimal(char32_t code, const char* lead, int digits) {
  return QLatin1String(lead) +
         QStringLiteral("%1").arg(static_cast<uint>(code), digits, 16, QLatin1Char('0'));
}

QString WrittenOut(char32_t character) {
  switch (character) {
    case U'\n':
      return QStringLiteral("\\n");
    case U'\r':
      return QStringLiteral("\\r");
    case U'\t':
      return QStringLiteral("\\t");
    case U'\\':
      return QStringLiteral("\\\\");
    default:
      break;
  }
  if (character < 0x100) return Hexadecimal(character, "\\x", 2);
  return character < 0x10000 ? Hexadecimal(character, "\\u", 4) : Hexadecimal(character, "\\U", 8);
}

// Where something is written out, it ends as soon as the result is longer than `limit`.
QString WrittenOut(const QString& text, qsizetype limit) {
  const auto needsIt = [](char32_t character) {
    return character == U'\\' || IsInvisible(character);
  };
  const QList<uint> characters = text.toUcs4();
  if (std::ranges::none_of(characters, needsIt)) return text;
  QString result;
  for (const char32_t character : characters) {
    if (needsIt(character)) {
      result += WrittenOut(character);
    } else {
      result += QChar::fromUcs4(character);
    }
    if (result.size() > limit) break;
  }
  return result;
}

}  // namespace

std::string Escaped(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  const QString shown = DisplayText(text);
  return TextFromDisplay(WrittenOut(shown, std::numeric_limits<qsizetype>::max()));
}

QString VisibleText(std::string_view text, std::size_t maxLength) {
  if (text.size() <= maxLength && IsPlain(text)) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
  }
  // A character takes at most four bytes, so this much is always enough.
  const auto limit = static_cast<qsizetype>(maxLength);
  QString result = WrittenOut(DisplayText(Beginning(text, (maxLength + 1) * 4)), limit);
  if (result.size() <= limit) return result;
  result.truncate(limit);
  if (result.back().isHighSurrogate()) result.chop(1);
  return result + QChar(0x2026);
}

}  // namespace corvane
