#pragma once

#include <functional>

#include <QBoxLayout>
#include <QLineEdit>
#include <QToolButton>

namespace corvane {

// Two small arrows beside a number field. The arrows, and the up and down keys in the field, call
// Up and Down, which the owner sets. Borrows the field.
class UpDownArrows : public QWidget {
 public:
  UpDownArrows(QLineEdit& field, QWidget* parent);

  std::function<void()> Up;
  std::function<void()> Down;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QToolButton* AddArrow(Qt::ArrowType type, const QString& name, const std::function<void()>& step);
};

// Makes the field wide enough for that many digits.
void FitDigits(QLineEdit& field, int digits);

// The field with its arrows to the right.
QBoxLayout* FieldWithArrows(QLineEdit* field, UpDownArrows* arrows);

}  // namespace corvane
