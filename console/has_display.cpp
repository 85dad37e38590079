#include "console/has_display.h"

#include <QGuiApplication>

namespace corvane {

bool HasDisplay() {
  return QGuiApplication::platformName() != QLatin1String("offscreen");
}

}  // namespace corvane
