#pragma once

#include "console/records_dialog.h"
#include "storage/admins_table.h"

namespace corvane {

// The list of all administrators, from which the operator takes some back.
class wndViewAdmins : public RecordsDialog {
 public:
  wndViewAdmins(AdminsTable& admins, QWidget& owner);

  ListBox* lstAdmins;
};

}  // namespace corvane
