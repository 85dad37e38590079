#include "console/window_group.h"

#include <algorithm>

#include <QDialog>
#include <QWindow>

namespace corvane {

void WindowGroup::Hide() {
  const auto placeOf = [](QWidget* window) {
    return Place{window, window->windowHandle()->position()};
  };
  myPlaces = {placeOf(&myWindow)};
  for (QDialog* dialog : myWindow.findChildren<QDialog*>()) {
    if (dialog->isVisible()) myPlaces.push_back(placeOf(dialog));
  }
  std::for_each(myPlaces.rbegin(), myPlaces.rend(),
                [](const Place& place) { place.window->hide(); });
}

void WindowGroup::Show() {
  QWidget* uppermost = nullptr;
  if (myPlaces.empty()) (uppermost = &myWindow)->showNormal();  // for the first time
  for (const Place& place : myPlaces) {
    if (place.window == nullptr) continue;
    uppermost = place.window;
    uppermost->setWindowState(uppermost->windowState() & ~Qt::WindowMinimized);
    // Otherwise the desktop chooses a place. QWidget::move() does nothing if the widget believes
    // that it is already there.
    uppermost->windowHandle()->setPosition(place.position);
    uppermost->show();
  }
  if (uppermost == nullptr) return;
  uppermost->raise();
  uppermost->activateWindow();
}

}  // namespace corvane
