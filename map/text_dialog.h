#pragma once

#include <functional>

#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace corvane::map {

// Asks for a line of text, such as a reason or a message. It cannot be empty. Deletes itself when
// closed.
class TextDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::TextDialog)

 public:
  // Shows `hint` above the field and `action` on the button.
  TextDialog(const QString& title, const QString& hint, const QString& label, const QString& action,
             QWidget& owner);

  std::function<void(const QString&)> Confirmed;
  // If set, tells what is wrong with a text; empty if nothing is. The dialog shows it and stays
  // open.
  std::function<QString(const QString&)> FaultOf;

  // The controls, in tab order. The dialog owns them.
  QLabel* lblHint;
  QLineEdit* txtText;
  QPushButton* btnOK;
  QPushButton* btnCancel;
};

}  // namespace corvane::map
