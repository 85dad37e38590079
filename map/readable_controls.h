#pragma once

#include <QGuiApplication>
#include <QObject>

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

}  // namespace corvane::map
