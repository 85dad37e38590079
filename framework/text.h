#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <QString>

// Text is bytes everywhere below the windows. The bytes are meant to be UTF-8; a text that is no
// valid UTF-8 is taken as Latin-1, so every sequence of bytes has a meaning.
namespace corvane {

// The text under Unicode case folding, as UTF-8: two texts are the same when their folded forms
// are equal byte for byte. For the keys of an index.
std::string FoldText(std::string_view text);

// Folding makes no text more than so many times longer or shorter, in bytes: texts whose lengths
// differ by more need not be folded to tell them apart.
inline constexpr std::size_t kFoldingFactor = 3;

// Whether a text of this length may be the same as one of `folded` bytes in its folded form.
constexpr bool MayFoldTo(std::size_t length, std::size_t folded) {
  return length <= folded * kFoldingFactor && folded <= length * kFoldingFactor;
}

// Whether the two are the same text without regard to letter case.
bool SameText(std::string_view left, std::string_view right);

// The text as a window shows it.
QString DisplayText(std::string_view text);

// The bytes of what an operator typed.
std::string TextFromDisplay(const QString& text);

// At most so many bytes of the text, not ending inside a UTF-8 sequence; points into `text`.
std::string_view Beginning(std::string_view text, std::size_t most);

// Field `number` (counted from 1) of a text whose fields are separated by `separator`; empty when
// there is none. The result points into `text`.
std::string_view NthField(std::string_view text, char separator, std::size_t number);

// Number of fields: one more than there are separators, 0 for an empty text.
std::size_t CountFields(std::string_view text, char separator);

// The text without the blanks (space, tab, line ends) at both ends; points into `text`.
std::string_view Trimmed(std::string_view text);

}  // namespace corvane
