#pragma once

#include <initializer_list>

#include <QBoxLayout>
#include <QDialog>
#include <QPushButton>

namespace corvane {

// The base of the operator's dialogs. A dialog is modal to the window that opened it and centred
// over it, and destroys itself when it closes. The Tab key follows the order in which the controls
// were made. Escape closes the dialog without any change. Enter presses the focused button, else
// the default button; without a default button, Enter in a field does nothing.
class Dialog : public QDialog {
 public:
  // `name` is the name of the class, by which the window can be found. The title is shown
  // literally.
  Dialog(const QString& name, const QString& title, QWidget& owner);

  // Shows the dialog with the focus on its first control, as if reached by the Tab key.
  void open() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
};

// The width at which a button shows its whole text, in pixels.
int WidthOfText(const QPushButton& button);

// A row of right-aligned buttons.
QBoxLayout* ButtonRow(std::initializer_list<QPushButton*> buttons);

}  // namespace corvane
