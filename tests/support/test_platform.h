#pragma once

#include <QByteArray>

namespace corvane {

// Windows that nobody sees, whatever the desktop, unless $CORVANE_TEST_PLATFORM names another of
// Qt's platforms; Qt's own variable does not get through Wine. Call it before the application is
// made.
inline void ChooseTestPlatform() {
  const QByteArray wanted = qgetenv("CORVANE_TEST_PLATFORM");
  qputenv("QT_QPA_PLATFORM", wanted.isEmpty() ? QByteArray("offscreen") : wanted);
}

}  // namespace corvane
