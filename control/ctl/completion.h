#pragma once

#include <QString>
#include <QStringList>

namespace corvane::ctl {

// For the shells' completion: what may replace the last word, a line each,
// with a description behind a tab where there is one. The other words are those before it, without
// the program's name. ":files" and ":folders" stand for the names of such.
QString Completions(const QStringList& words);

}  // namespace corvane::ctl
