#pragma once

#include <array>
#include <functional>

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>

#include "map/alarms/alarm_rules.h"

namespace corvane::map {

// Asks what raises an alarm, and how. Deletes itself when closed.
class AlarmsDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::AlarmsDialog)

 public:
  // "Add" adds `proposal`. Without a tray there are no desktop notifications.
  AlarmsDialog(const AlarmRules& rules, const AlarmCircle& proposal, bool hasTray, QWidget& owner);

  // The user confirmed these rules.
  std::function<void(const AlarmRules&)> Confirmed;
  // The user confirmed, to draw a circle next.
  std::function<void()> DrawRequested;

  // The controls, in tab order. The dialog owns them.
  std::array<QComboBox*, kAlarmKinds> cmbWho;
  QSpinBox* spnHitPoints;
  QComboBox* cmbUnit;
  QSpinBox* spnSilence;
  QTableWidget* lstCircles;
  QPushButton* btnDraw;
  QPushButton* btnAdd;
  QPushButton* btnDelete;
  QCheckBox* chkAlert;
  QCheckBox* chkNotify;
  QCheckBox* chkBeep;
  QSpinBox* spnCooldown;
  QPushButton* btnOK;
  QPushButton* btnCancel;

 private:
  void LayOut();
  void Wire();
  void AddCircle(const AlarmCircle& circle) const;
  void DeleteCircle();
  void Check();
  AlarmRules Entered() const;
  void Confirm();

  AlarmCircle myProposal;
};

}  // namespace corvane::map
