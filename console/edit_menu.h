#pragma once

#include <QMenu>

namespace corvane {

// Fills the menu "&Edit". Its items send their keys to the focused widget: a text field supports
// all of them, a list copies and selects rows.
void FillEditMenu(QMenu& menu);

}  // namespace corvane
