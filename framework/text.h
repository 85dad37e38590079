#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <QString>

// Below the windows, text is bytes. They should be UTF-8; a text that is not valid UTF-8 is read as
// Latin-1, so every sequence of bytes has a meaning.
namespace corvane {

// The text under Unicode case folding, as UTF-8: two texts are the same if their folded forms are
// equal byte for byte. Used for index keys.
std::string FoldText(std::string_view text);

// Folding changes a text's length in bytes by at most this factor, so texts whose lengths differ by
// more need not be folded to tell them apart.
inline constexpr std::size_t kFoldingFactor = 3;

// Whether a text of this length may be the same as one of `folded` bytes in its folded form.
constexpr bool MayFoldTo(std::size_t length, std::size_t folded) {
  return length <= folded * kFoldingFactor && folded <= length * kFoldingFactor;
}

// Whether both are the same text, ignoring letter case.
bool SameText(std::string_view left, std::string_view right);

// Converts text for a window.
QString DisplayText(std::string_view text);

// Converts text from a window, as UTF-8.
std::string TextFromDisplay(const QString& text);

// The first `maxBytes` bytes of the text, or fewer so that no UTF-8 sequence is cut; points into
// `text`.
std::string_view Beginning(std::string_view text, std::size_t maxBytes);

// Field `number` (counted from 1) of a text with fields separated by `separator`; empty if there is
// none. Points into `text`.
std::string_view NthField(std::string_view text, char separator, std::size_t number);

// Number of fields: one more than there are separators, 0 for an empty text.
std::size_t CountFields(std::string_view text, char separator);

// The text without blanks (space, tab, line ends) at both ends; points into `text`.
std::string_view Trimmed(std::string_view text);

}  // namespace corvane
