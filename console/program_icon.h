#pragma once

#include <QIcon>

namespace corvane {

// The program's icon in all sizes that it is drawn for.
QIcon ProgramIcon();

}  // namespace corvane
