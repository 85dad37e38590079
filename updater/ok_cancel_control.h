#pragma once

#include <functional>

#include <QPushButton>
#include <QString>
#include <QWidget>

namespace corvane {

// A window's two buttons: the action button, pressed by Enter, and the cancel button, pressed by
// Escape.
class OKCancelControl : public QWidget {
 public:
  explicit OKCancelControl(QWidget* parent);

  QString ActionButtonText() const { return LeftButton->text(); }
  void SetActionButtonText(const QString& text) const { LeftButton->setText(text); }
  QString CancelButtonText() const { return RightButton->text(); }
  void SetCancelButtonText(const QString& text) const { RightButton->setText(text); }
  bool ActionButtonEnabled() const { return LeftButton->isEnabled(); }
  void SetActionButtonEnabled(bool enabled) const { LeftButton->setEnabled(enabled); }

  // Events: the button was pressed.
  std::function<void()> OKAction;
  std::function<void()> CancelAction;

  // The control owns them.
  QPushButton* LeftButton;
  QPushButton* RightButton;

 private:
  void LeftButton_Action() const;
  void RightButton_Action() const;
};

}  // namespace corvane
