#pragma once

#include <functional>

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QSpinBox>
#include <QToolBar>

#include "map/own_position.h"

namespace corvane::map {

// The tool bar for playing by hand: whether to send a position, and the hit points and flags in it.
class OwnBar : public QToolBar {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::OwnBar)

 public:
  // Borrows the position.
  OwnBar(OwnPosition& position, QWidget* parent);

  // The controls, in tab order. The bar owns them.
  QCheckBox* chkSend;
  QSpinBox* spnHp;
  QCheckBox* chkBattle;
  QCheckBox* chkDead;

 private:
  void Take();

  OwnPosition& myPosition;
};

}  // namespace corvane::map
