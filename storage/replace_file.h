#pragma once

#include <QByteArrayView>
#include <QString>

namespace corvane {

// Gives the file this content, as a whole: written beside, flushed to the disk, renamed. Where the
// folder allows no new file, or not in the place of this one, it is overwritten as it lies there.
// What does not fit on the disk changes nothing.
// Returns why it does not have the content, nothing when it has.
QString ReplaceFile(const QString& file, QByteArrayView content);

}  // namespace corvane
