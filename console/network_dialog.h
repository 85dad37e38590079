#pragma once

#include <cstdint>
#include <string>

#include <QCheckBox>
#include <QLineEdit>

#include "console/dialog.h"
#include "console/up_down_arrows.h"

namespace corvane {

// The form of a network, shared by the dialogs that add and edit one. Each change of the field for
// the number of users is clamped to 1 to 1000.
class NetworkDialog : public Dialog {
 public:
  NetworkDialog(const QString& name, const QString& title, QWidget& owner);

  // The controls, in tab order. The dialog owns them.
  QCheckBox* chkEnable;
  QLineEdit* txtName;
  QLineEdit* txtUsers;
  UpDownArrows* UpDownArrows1;
  QLineEdit* txtPass;
  QPushButton* btnOK;
  QPushButton* btnCancel;

 protected:
  std::int32_t MaxUsers() const;

 private:
  void txtUsers_TextChange();
};

}  // namespace corvane
