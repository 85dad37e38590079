#pragma once

#include <QGuiApplication>
#include <QObject>
#include <QProxyStyle>

namespace corvane::map {

// Keeps the grey texts in empty fields readable in all palettes, also when the desktop switches
// between light and dark. Some themes leave them black on dark.
class ReadablePlaceholders : public QObject {
 public:
  // Borrows the application.
  explicit ReadablePlaceholders(QGuiApplication& application);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  static void Apply();
};

// Outlines check boxes and radio buttons in dark colours, where some styles leave them almost
// invisible.
class VisibleBoxes : public QProxyStyle {
 public:
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
};

}  // namespace corvane::map
