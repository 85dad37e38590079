#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <QDateTime>

namespace corvane {

// Local date and time as the database keeps it: "YYYY-MM-DD HH:MM:SS".
std::string StoredDate(const QDateTime& date);

// Parses such a text; the separator may be a "T", and the time may be missing. Returns an invalid
// QDateTime for anything else.
QDateTime DateFromStored(std::string_view text);

// The same in UTC: such texts are in the order of their dates.
std::string StoredUtc(const QDateTime& date);
QDateTime UtcFromStored(std::string_view text);

// Seconds of a text such as "90s", "30m", "2h", "2d" or "1w", up to ten years; none for anything
// else.
std::optional<std::int64_t> SecondsFromText(std::string_view text);

// Short date, a blank and short time in the operator's locale; empty for an invalid date.
std::string ShortDateAndTime(const QDateTime& date);

}  // namespace corvane
