#pragma once

#include <string>
#include <string_view>

#include <QDateTime>

namespace corvane {

// Local date and time as the database keeps it: "YYYY-MM-DD HH:MM:SS".
std::string StoredDate(const QDateTime& date);

// The date of such a text, also with a "T" in the middle or without a time of day; an invalid
// QDateTime when it is none.
QDateTime DateFromStored(std::string_view text);

// Short date, a blank, short time, in the operator's locale; empty for an invalid date.
std::string ShortDateAndTime(const QDateTime& date);

}  // namespace corvane
