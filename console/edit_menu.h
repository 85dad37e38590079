#pragma once

#include <QMenu>

namespace corvane {

// Fills the menu "&Edit". Its items act on whatever has the focus, by the keys that stand for
// them: a text field does them all, a list copies and selects rows.
void FillEditMenu(QMenu& menu);

}  // namespace corvane
