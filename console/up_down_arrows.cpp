#include "console/up_down_arrows.h"

#include <QKeyEvent>

namespace corvane {
namespace {

constexpr int kArrowWidth = 20;
constexpr int kFieldPadding = 24;

}  // namespace

UpDownArrows::UpDownArrows(QLineEdit& field, QWidget* parent) : QWidget(parent) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(AddArrow(Qt::UpArrow, QStringLiteral("Increase"), Up));
  column->addWidget(AddArrow(Qt::DownArrow, QStringLiteral("Decrease"), Down));
  setFixedHeight(field.sizeHint().height());
  field.installEventFilter(this);
}

QToolButton* UpDownArrows::AddArrow(Qt::ArrowType type, const QString& name,
                                    const std::function<void()>& step) {
  auto* arrow = new QToolButton(this);
  arrow->setArrowType(type);
  arrow->setAccessibleName(name);
  arrow->setAutoRepeat(true);
  arrow->setFocusPolicy(Qt::NoFocus);
  arrow->setFixedWidth(kArrowWidth);
  arrow->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
  connect(arrow, &QToolButton::clicked, this, [&step] { step(); });
  return arrow;
}

bool UpDownArrows::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Up || key == Qt::Key_Down) {
      (key == Qt::Key_Up ? Up : Down)();
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

void FitDigits(QLineEdit& field, int digits) {
  const QString widest(digits, QLatin1Char('0'));
  field.setFixedWidth(field.fontMetrics().horizontalAdvance(widest) + kFieldPadding);
}

QBoxLayout* FieldWithArrows(QLineEdit* field, UpDownArrows* arrows) {
  auto* row = new QHBoxLayout;
  row->setSpacing(2);
  row->addWidget(field);
  row->addWidget(arrows);
  row->addStretch();
  return row;
}

}  // namespace corvane
