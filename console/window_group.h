#pragma once

#include <vector>

#include <QPoint>
#include <QPointer>
#include <QWidget>

namespace corvane {

// Hides and shows a window together with the dialogs that it opened. Each returns to its place, and
// the topmost gets the focus. Borrows the window.
class WindowGroup {
 public:
  explicit WindowGroup(QWidget& window) : myWindow(window) {}

  // The window must have been shown before.
  void Hide();
  // Shows the windows that Hide() hid, none of them minimised. Without an earlier Hide() shows the
  // window alone.
  void Show();

 private:
  struct Place {
    QPointer<QWidget> window;
    QPoint position;  // without the frame, which desktops handle differently
  };

  QWidget& myWindow;
  std::vector<Place> myPlaces;  // owners before their dialogs
};

}  // namespace corvane
