#pragma once

#include <functional>

#include <QMenu>
#include <QSystemTrayIcon>

namespace corvane {

class wndMain;

// The icon in the notification area. A click on it opens a menu that hides or shows the main window
// and quits the program. Borrows the window.
class MyTrayItem : public QSystemTrayIcon {
 public:
  MyTrayItem(wndMain& window, std::function<void()> quit);

  QMenu& Menu() { return myMenu; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void NameFirstItem();
  void ToggleWindow();
  void OpenMenu();

  wndMain& myWindow;
  QMenu myMenu;
  QAction* myToggle;
};

}  // namespace corvane
