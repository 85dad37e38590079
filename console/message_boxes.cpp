#include "console/message_boxes.h"

#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>

#include "console/application.h"
#include "framework/text.h"

namespace corvane {

MessageBox::Answer ShowMessageBox(const MessageBox& box) {
  const bool isQuestion = box.kind == MessageBox::Kind::Question;
  QWidget* const owner = QApplication::activeWindow();
  QMessageBox window(owner);
  window.setWindowTitle(box.title.empty() ? QStringLiteral("Corvane Server")
                                          : DisplayText(box.title));
  window.setTextFormat(Qt::PlainText);
  window.setText(DisplayText(box.text));
  if (isQuestion) window.setIcon(QMessageBox::Question);
  window.setStandardButtons(isQuestion ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok);
  if (isQuestion) {
    // A stray key press answers No.
    window.setDefaultButton(QMessageBox::No);
    window.setEscapeButton(QMessageBox::No);
  }
  // Not QDialog::exec(), which returns when the box is hidden together with its owner.
  QEventLoop loop;
  QObject::connect(&window, &QDialog::finished, &loop, &QEventLoop::quit);
  window.setWindowModality(owner == nullptr ? Qt::ApplicationModal : Qt::WindowModal);
  window.show();
  loop.exec();
  if (!isQuestion) return MessageBox::Answer::OK;
  const bool isYes = window.result() == QMessageBox::Yes;
  return isYes ? MessageBox::Answer::Yes : MessageBox::Answer::No;
}

MessageBoxFunction MessageBoxesOfThePlatform() {
  return HasDisplay() ? ShowMessageBox : MessageToStandardError;
}

}  // namespace corvane
