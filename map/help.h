#pragma once

#include <QMenuBar>
#include <QWidget>

namespace corvane::map {

// Opens a table of the keys: those of the menus' actions, then mouse and arrow keys. The window
// owns it.
void ShowKeys(QWidget& window, const QMenuBar& menus);

// Opens the name, version and purpose of the program. The window owns it.
void ShowAbout(QWidget& window);

}  // namespace corvane::map
