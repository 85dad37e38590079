#pragma once

#include <QByteArray>

namespace corvane {

// Selects Qt's offscreen platform, or the one in $CORVANE_TEST_PLATFORM; Wine does not pass on Qt's
// own variable. Call it before the application is made.
inline void ChooseTestPlatform() {
  const QByteArray wanted = qgetenv("CORVANE_TEST_PLATFORM");
  qputenv("QT_QPA_PLATFORM", wanted.isEmpty() ? QByteArray("offscreen") : wanted);
}

}  // namespace corvane
