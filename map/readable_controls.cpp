#include "map/readable_controls.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>

namespace corvane::map {
namespace {

constexpr double kShareOfText = 0.65;

QColor Mixed(const QColor& text, const QColor& base) {
  const auto mix = [](int one, int other) {
    return static_cast<int>(kShareOfText * one + (1 - kShareOfText) * other);
  };
  return {mix(text.red(), base.red()), mix(text.green(), base.green()),
          mix(text.blue(), base.blue())};
}

}  // namespace

ReadablePlaceholders::ReadablePlaceholders(QGuiApplication& application) {
  application.installEventFilter(this);
  Apply();
}

bool ReadablePlaceholders::eventFilter(QObject* watched, QEvent* event) {
  if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) Apply();
  return false;
}

void ReadablePlaceholders::Apply() {
  QPalette palette = QApplication::palette();
  const QColor colour = Mixed(palette.color(QPalette::Text), palette.color(QPalette::Base));
  // Setting it raises the event again.
  if (palette.color(QPalette::PlaceholderText) == colour) return;
  palette.setColor(QPalette::PlaceholderText, colour);
  QApplication::setPalette(palette);
}

}  // namespace corvane::map
