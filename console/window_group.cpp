#include "console/window_group.h"

#include <QDialog>

namespace corvane {

void WindowGroup::Hide() {
  myPlaces = {{&myWindow, myWindow.pos()}};
  for (QDialog* dialog : myWindow.findChildren<QDialog*>()) {
    if (dialog->isVisible()) myPlaces.push_back({dialog, dialog->pos()});
  }
  for (auto place = myPlaces.rbegin(); place != myPlaces.rend(); ++place)
    place->window->hide();
}

void WindowGroup::Show() {
  if (myPlaces.empty()) myPlaces = {{&myWindow, myWindow.pos()}};
  QWidget* uppermost = nullptr;
  for (const Place& place : myPlaces) {
    if (place.window == nullptr) continue;
    uppermost = place.window;
    uppermost->setWindowState(uppermost->windowState() & ~Qt::WindowMinimized);
    // Otherwise the desktop would look for a place.
    uppermost->move(place.position);
    uppermost->show();
  }
  if (uppermost == nullptr) return;
  uppermost->raise();
  uppermost->activateWindow();
}

}  // namespace corvane
