#pragma once

#include "console/records_dialog.h"

namespace corvane {

class Operator;

// The list of all bans, from which the operator can lift some.
class wndViewBans : public RecordsDialog {
 public:
  wndViewBans(Operator& op, QWidget& owner);

  ListBox* lstBans;
};

}  // namespace corvane
