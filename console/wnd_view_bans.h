#pragma once

#include "console/records_dialog.h"
#include "storage/bans_table.h"

namespace corvane {

// The list of all bans, from which the operator lifts some.
class wndViewBans : public RecordsDialog {
 public:
  wndViewBans(BansTable& bans, QWidget& owner);

  ListBox* lstBans;
};

}  // namespace corvane
