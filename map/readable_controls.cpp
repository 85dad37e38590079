#include "map/readable_controls.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QPalette>
#include <QStyleOption>

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

void VisibleBoxes::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const {
  QProxyStyle::drawPrimitive(element, option, painter, widget);
  const bool isRound = element == PE_IndicatorRadioButton;
  const QColor text = option->palette.color(QPalette::WindowText);
  const QColor window = option->palette.color(QPalette::Window);
  const bool isDark = window.lightness() < text.lightness();
  if (!isDark || (!isRound && element != PE_IndicatorCheckBox)) return;
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(Mixed(text, window));
  painter->setBrush(Qt::NoBrush);
  const QRectF box = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
  isRound ? painter->drawEllipse(box) : painter->drawRect(box);
  painter->restore();
}

}  // namespace corvane::map
