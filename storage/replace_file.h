#pragma once

#include <QByteArrayView>
#include <QString>

namespace corvane {

// Replaces the file's content as a whole: writes a temporary file beside it, flushes that to the
// disk and renames it. If the folder does not permit that, overwrites the file in place. If the
// content does not fit on the disk, the file is unchanged. Returns the error, or nothing.
QString ReplaceFile(const QString& file, QByteArrayView content);

}  // namespace corvane
