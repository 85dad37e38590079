#include "console/my_tray_item.h"

#include <string_view>
#include <utility>

#include <QApplication>
#include <QCursor>
#include <QEvent>

#include "console/wnd_main.h"
#include "framework/text.h"

namespace corvane {

MyTrayItem::MyTrayItem(wndMain& window, std::function<void()> quit)
    : QSystemTrayIcon(QApplication::windowIcon()), myWindow(window) {
  const std::string_view rules = window.sSocket.Context.rules.name;
  setToolTip(QStringLiteral("%1 (%2 rules)").arg(window.windowTitle(), DisplayText(rules)));
  myToggle = myMenu.addAction(QString());
  NameFirstItem();
  myMenu.addSeparator();
  const QAction* exit = myMenu.addAction(QStringLiteral("Exit"));
  connect(myToggle, &QAction::triggered, this, &MyTrayItem::ToggleWindow);
  connect(exit, &QAction::triggered, this, std::move(quit));

  // A desktop that draws the menu itself may not report that it opens, so the text also follows the
  // window.
  connect(&myMenu, &QMenu::aboutToShow, this, &MyTrayItem::NameFirstItem);
  myWindow.installEventFilter(this);

  setContextMenu(&myMenu);
  connect(this, &QSystemTrayIcon::activated, this, [this](ActivationReason reason) {
    // A right click opens the menu by itself.
    if (reason == Trigger) OpenMenu();
  });
}

bool MyTrayItem::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Show || event->type() == QEvent::Hide) NameFirstItem();
  return QSystemTrayIcon::eventFilter(watched, event);
}

void MyTrayItem::NameFirstItem() {
  myToggle->setText(myWindow.isVisible() ? QStringLiteral("Hide Window")
                                         : QStringLiteral("Show Window"));
}

void MyTrayItem::ToggleWindow() {
  if (myWindow.isVisible()) {
    myWindow.HideWindow();
  } else {
    myWindow.ShowWindow();
  }
}

void MyTrayItem::OpenMenu() {
  myMenu.popup(QCursor::pos());
  // Otherwise a click elsewhere would not close it on Windows.
  myMenu.activateWindow();
}

}  // namespace corvane
