#pragma once

#include <QString>
#include <QStringList>

namespace corvane::ctl {

// Completes the last of these words, which follow the program's name, for the shells. Returns one
// candidate a line, with a tab and a description if there is one. The lines ":files" and ":folders"
// stand for all names of files or folders.
QString Completions(const QStringList& words);

}  // namespace corvane::ctl
