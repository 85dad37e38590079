#pragma once

#include <QCheckBox>
#include <QCoreApplication>
#include <QSpinBox>
#include <QWidget>

#include "map/own_position.h"

namespace corvane::map {

// The controls for playing by hand: whether to send a position, and while it is sent, the hit
// points and flags in it.
class OwnBar : public QWidget {
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
