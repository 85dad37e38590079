#pragma once

#include <cstdint>
#include <optional>

#include <QByteArray>
#include <QString>

namespace corvane {

// What the file holds, for names that somebody else may have put there: none for a link, a pipe or
// anything else that is no plain file, for another user's file, for more than `maxBytes`, and for
// what cannot be read. Never waits.
std::optional<QByteArray> ReadPlainFile(const QString& file, std::int64_t maxBytes);

}  // namespace corvane
