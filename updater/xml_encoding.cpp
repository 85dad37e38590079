#include "updater/xml_encoding.h"

#include <algorithm>
#include <iterator>

#include <QString>
#include <QStringDecoder>

#include "framework/text.h"

namespace corvane {
namespace {

constexpr std::string_view kMarkOfUTF8 = "\xEF\xBB\xBF";
constexpr std::string_view kMarkOfUTF16BE = "\xFE\xFF";
constexpr std::string_view kMarkOfUTF16LE = "\xFF\xFE";

// Names of the two encodings with one byte per letter.
constexpr std::string_view kLatinNames[] = {"ISO-8859-1", "ISO_8859-1",   "ISO8859-1",
                                            "latin1",     "windows-1252", "cp1252"};

// windows-1252 from 80 to 9F (WHATWG Encoding Standard). Any other byte is its code.
constexpr char16_t kWindows1252[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

std::optional<std::string> FromUTF16(std::string_view text, QStringDecoder::Encoding encoding) {
  QStringDecoder decode(encoding);
  const QString decoded = decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
  // The decoder does not report an odd byte.
  if (decode.hasError() || text.size() % 2 != 0) return std::nullopt;
  return decoded.toStdString();
}

std::string FromWindows1252(std::string_view text) {
  QString decoded = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
  for (QChar& character : decoded) {
    const unsigned place = character.unicode() - 0x80U;
    if (place < std::size(kWindows1252)) character = kWindows1252[place];
  }
  return decoded.toStdString();
}

// The value of "encoding" in the document's declaration; empty if there is none.
std::string_view DeclaredEncoding(std::string_view document) {
  if (!document.starts_with("<?xml")) return {};
  const std::string_view declaration = document.substr(0, document.find("?>"));
  const std::size_t name = declaration.find("encoding");
  if (name == std::string_view::npos) return {};
  const std::string_view rest = declaration.substr(name);
  const std::size_t begin = rest.find_first_of("\"'");
  if (begin == std::string_view::npos) return {};
  const std::size_t end = rest.find(rest[begin], begin + 1);
  return end == std::string_view::npos ? std::string_view()
                                       : rest.substr(begin + 1, end - begin - 1);
}

}  // namespace

std::optional<std::string> XMLInUTF8(std::string_view document) {
  if (document.starts_with(kMarkOfUTF16BE)) {
    return FromUTF16(document.substr(kMarkOfUTF16BE.size()), QStringDecoder::Utf16BE);
  }
  if (document.starts_with(kMarkOfUTF16LE)) {
    return FromUTF16(document.substr(kMarkOfUTF16LE.size()), QStringDecoder::Utf16LE);
  }
  if (document.starts_with(kMarkOfUTF8)) {
    return std::string(document.substr(kMarkOfUTF8.size()));
  }
  const std::string_view encoding = DeclaredEncoding(document);
  const bool isLatin = std::ranges::any_of(
      kLatinNames, [encoding](std::string_view name) { return SameText(name, encoding); });
  return isLatin ? FromWindows1252(document) : std::string(document);
}

}  // namespace corvane
