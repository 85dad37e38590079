#pragma once

#include <QComboBox>
#include <QPlainTextEdit>

#include "console/dialog.h"

namespace corvane {

class Operator;

// The dialog that sends a message to one network or to all. Throws as Operator::Send does.
class wndMessage : public Dialog {
 public:
  wndMessage(Operator& op, QWidget& owner);

  // The controls, in tab order. The dialog owns them.
  QComboBox* pmNetwork;
  QPlainTextEdit* fldText;
  QPushButton* btnSend;

 private:
  void btnSend_Action();

  Operator& myOperator;
};

}  // namespace corvane
