#pragma once

#include <cstdint>
#include <optional>

#include <QByteArray>
#include <QString>

namespace corvane {

// Reads a file whose name another user may have planted. None for a link, a pipe or anything else
// that is not a regular file, for another user's file, for more than `maxBytes`, and for a file
// that cannot be read. Never waits.
std::optional<QByteArray> ReadPlainFile(const QString& file, std::int64_t maxBytes);

}  // namespace corvane
