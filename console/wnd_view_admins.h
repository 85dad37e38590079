#pragma once

#include "console/records_dialog.h"

namespace corvane {

class Operator;

// The list of all administrators, from which the operator can remove some.
class wndViewAdmins : public RecordsDialog {
 public:
  wndViewAdmins(Operator& op, QWidget& owner);

  ListBox* lstAdmins;
};

}  // namespace corvane
