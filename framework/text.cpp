#include "framework/text.h"

#include <algorithm>

#include <QByteArrayView>
#include <QStringDecoder>

namespace corvane {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

constexpr bool IsASCII(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

constexpr char LowerASCII(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

}  // namespace

std::string FoldText(std::string_view text) {
  if (!std::ranges::all_of(text, IsASCII)) return TextFromDisplay(DisplayText(text).toCaseFolded());
  std::string folded(text);
  std::ranges::transform(folded, folded.begin(), LowerASCII);
  return folded;
}

bool SameText(std::string_view left, std::string_view right) {
  // Folding never makes a character disappear, so the first difference in plain ASCII decides.
  const std::size_t common = std::min(left.size(), right.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (!IsASCII(left[i]) || !IsASCII(right[i])) {
      return left == right || FoldText(left) == FoldText(right);
    }
    if (LowerASCII(left[i]) != LowerASCII(right[i])) return false;
  }
  return left.size() == right.size();
}

QString DisplayText(std::string_view text) {
  const QByteArrayView bytes(text.data(), static_cast<qsizetype>(text.size()));
  // Without the flag a leading U+FEFF would be dropped, which makes two different names equal.
  QStringDecoder decode(QStringDecoder::Utf8,
                        QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
  QString decoded = decode(bytes);
  return decode.hasError() ? QString::fromLatin1(bytes) : decoded;
}

std::string TextFromDisplay(const QString& text) {
  return text.toStdString();
}

std::string_view Beginning(std::string_view text, std::size_t maxBytes) {
  if (text.size() <= maxBytes) return text;
  const auto continues = [text](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80;
  };
  // A sequence has at most three bytes after the first.
  std::size_t end = maxBytes;
  while (end > 0 && maxBytes - end < 3 && continues(end))
    --end;
  return text.substr(0, end);
}

std::string_view NthField(std::string_view text, char separator, std::size_t number) {
  if (number == 0) return {};
  std::size_t start = 0;
  for (std::size_t field = 1; field < number; ++field) {
    const std::size_t end = text.find(separator, start);
    if (end == std::string_view::npos) return {};
    start = end + 1;
  }
  return text.substr(start, text.find(separator, start) - start);
}

std::size_t CountFields(std::string_view text, char separator) {
  if (text.empty()) return 0;
  return static_cast<std::size_t>(std::ranges::count(text, separator)) + 1;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t start = text.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

}  // namespace corvane
