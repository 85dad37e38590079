#include "framework/visible_text.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include <QList>

#include "framework/text.h"

namespace corvane {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Invisible characters that Unicode classes as letters, marks or symbols, including code points
// reserved for more of them. In ascending order.
constexpr Range kBlankLetters[] = {
    {0x034F, 0x034F}, {0x115F, 0x1160}, {0x17B4, 0x17B5},   {0x180B, 0x180F},  {0x2060, 0x206F},
    {0x2800, 0x2800}, {0x3164, 0x3164}, {0xFDD0, 0xFDEF},   {0xFE00, 0xFE0F},  {0xFFA0, 0xFFA0},
    {0xFFF0, 0xFFF8}, {0xFFFE, 0xFFFF}, {0x1D159, 0x1D159}, {0xE0000, 0xE0FFF}};

constexpr char kDelete = 0x7F;
constexpr char32_t kEmojiSelector = 0xFE0F;

bool IsPlain(std::string_view text) {
  return std::ranges::all_of(text, [](char byte) { return byte >= ' ' && byte < kDelete; });
}

bool IsInvisible(char32_t character) {
  if (character < kDelete) return character <= U' ';
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

bool IsSymbol(char32_t character) {
  const QChar::Category category = QChar::category(character);
  return category == QChar::Symbol_Other || category == QChar::Symbol_Math;
}

// Characters that people write between visible ones: joiners in Persian and in emoji, and the
// blanks of French and Chinese.
bool IsKeptInside(char32_t character) {
  return character == 0x200C || character == 0x200D || character == kEmojiSelector ||
         character == 0x00A0 || character == 0x3000;
}

// A text that decides for each character by its neighbours whether it misleads.
class Characters {
 public:
  explicit Characters(const QString& text) : myCharacters(text.toUcs4()) {}

  qsizetype Count() const { return myCharacters.size(); }
  char32_t At(qsizetype at) const { return myCharacters[at]; }

  // Whether the character at this place misleads and must be escaped.
  bool Misleads(qsizetype at) const {
    const char32_t character = At(at);
    if (character == U' ' || IsVisible(at)) return false;
    if (!IsKeptInside(character) || !IsVisible(at - 1) || !IsVisible(at + 1)) return true;
    return character == kEmojiSelector && At(at - 1) == kEmojiSelector;
  }

  // The range of the text without the plain blanks around it; both 0 if it is all blanks.
  std::pair<qsizetype, qsizetype> Inside() const {
    qsizetype end = Count();
    while (end > 0 && At(end - 1) == U' ')
      --end;
    qsizetype begin = 0;
    while (begin < end && At(begin) == U' ')
      ++begin;
    return {begin, end};
  }

 private:
  bool IsVisible(qsizetype at) const {
    if (at < 0 || at >= Count()) return false;
    // After a symbol it selects the symbol's picture and belongs to it.
    if (At(at) == kEmojiSelector) return at > 0 && IsSymbol(At(at - 1));
    return !IsInvisible(At(at));
  }

  QList<uint> myCharacters;
};

void AppendUtf8(std::string& text, char32_t character) {
  const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
  const auto continued = [character](unsigned shift) { return 0x80 | (character >> shift & 0x3F); };
  if (character < 0x80) return append(character);
  if (character < 0x800) {
    append(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      append(0xE0 | character >> 12);
    } else {
      append(0xF0 | character >> 18);
      append(continued(12));
    }
    append(continued(6));
  }
  append(continued(0));
}

void AppendHexadecimal(std::string& text, char32_t code, char lead, unsigned digits) {
  text += {'\\', lead};
  while (digits-- > 0)
    text += "0123456789abcdef"[code >> 4 * digits & 0xF];
}

void AppendWrittenOut(std::string& text, char32_t character) {
  switch (character) {
    case U'\n':
      text += "\\n";
      break;
    case U'\r':
      text += "\\r";
      break;
    case U'\t':
      text += "\\t";
      break;
    default:
      if (character < 0x100) {
        AppendHexadecimal(text, character, 'x', 2);
      } else if (character < 0x10000) {
        AppendHexadecimal(text, character, 'u', 4);
      } else {
        AppendHexadecimal(text, character, 'U', 8);
      }
  }
}

enum class OuterBlanks { Kept, WrittenOut };

// Appends the text, up to a result of `maxBytes` bytes. Returns whether all of it fits.
bool Append(std::string& result, const QString& text, OuterBlanks outerBlanks,
            std::size_t maxBytes) {
  const Characters characters(text);
  const auto [begin, end] = outerBlanks == OuterBlanks::WrittenOut
                                ? characters.Inside()
                                : std::pair<qsizetype, qsizetype>(0, characters.Count());
  for (qsizetype at = 0; at < characters.Count(); ++at) {
    const std::size_t before = result.size();
    if (at < begin || at >= end || characters.Misleads(at)) {
      AppendWrittenOut(result, characters.At(at));
    } else {
      AppendUtf8(result, characters.At(at));
    }
    if (result.size() > maxBytes) {
      result.resize(before);
      return false;
    }
  }
  return true;
}

}  // namespace

bool AppendEscaped(std::string& line, std::string_view text, std::size_t maxBytes) {
  const std::string_view beginning = Beginning(text, maxBytes - line.size());
  const bool isWhole = beginning.size() == text.size();
  if (!IsPlain(beginning)) {
    return Append(line, DisplayText(beginning), OuterBlanks::Kept, maxBytes) && isWhole;
  }
  line += beginning;
  return isWhole;
}

std::string Escaped(std::string_view text) {
  std::string line;
  AppendEscaped(line, text, std::numeric_limits<std::size_t>::max());
  return line;
}

std::string EscapedJson(std::string_view json) {
  const Characters characters(DisplayText(json));
  std::string result;
  for (qsizetype at = 0; at < characters.Count(); ++at) {
    if (!characters.Misleads(at)) {
      AppendUtf8(result, characters.At(at));
      continue;
    }
    const auto units = QChar::fromUcs4(characters.At(at));
    for (const char16_t unit : units)
      AppendHexadecimal(result, unit, 'u', 4);
  }
  return result;
}

QString VisibleText(std::string_view text, std::size_t maxLength) {
  if (text.empty()) return {};
  if (text.size() <= maxLength && IsPlain(text) && text.front() != ' ' && text.back() != ' ') {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
  }
  // A character takes at most four bytes, and an escape ten, so this much is always enough.
  const std::size_t maxBytes = (maxLength + 4) * 4;
  std::string shown;
  Append(shown, DisplayText(Beginning(text, maxBytes)), OuterBlanks::WrittenOut, maxBytes);
  const auto limit = static_cast<qsizetype>(maxLength);
  QString result = DisplayText(shown);
  if (result.size() <= limit) return result;
  result.truncate(limit);
  if (result.back().isHighSurrogate()) result.chop(1);
  return result + QChar(0x2026);
}

}  // namespace corvane
