#pragma once

#include <vector>

#include <QPoint>
#include <QPointer>
#include <QWidget>

namespace corvane {

// A window and the dialogs that it opened, which the operator hides and shows together. Shown
// again, each stands where it stood, and the uppermost has the keyboard. Borrows the window.
class WindowGroup {
 public:
  explicit WindowGroup(QWidget& window) : myWindow(window) {}

  // The window has been shown before.
  void Hide();
  // Shows what Hide has hidden, none of it minimised.
  void Show();

 private:
  struct Place {
    QPointer<QWidget> window;
    QPoint position;  // without the frame, of which desktops have their own ideas
  };

  QWidget& myWindow;
  std::vector<Place> myPlaces;  // owners before what they own
};

}  // namespace corvane
