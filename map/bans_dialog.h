#pragma once

#include <functional>

#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>

#include "client/ban.h"

namespace corvane::map {

// The server's bans, of which the selected ones can be lifted.
class BansDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::BansDialog)

 public:
  explicit BansDialog(QWidget& owner);

  // The user lifts that ban.
  std::function<void(const std::string& id)> Lifted;

  // Replaces what is shown.
  void Show(const client::BanList& list);

  // The controls, in tab order. The dialog owns them.
  QTableWidget* lstBans;
  QPushButton* btnLift;
  QPushButton* btnClose;

 private:
  void LiftSelected() const;

  QLabel* myCount;
};

}  // namespace corvane::map
