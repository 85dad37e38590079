#pragma once

#include <functional>

#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>

#include "client/ban.h"

namespace corvane::map {

// Lists the server's bans and lifts the selected ones. Deletes itself when closed.
class BansDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::BansDialog)

 public:
  explicit BansDialog(QWidget& owner);

  // Raised for each selected ban when the user lifts them.
  std::function<void(const std::string& id)> Lifted;

  // Replaces the rows.
  void Show(const client::BanList& list);

  // The controls, in tab order. The dialog owns them.
  QTreeWidget* lstBans;
  QPushButton* btnLift;
  QPushButton* btnClose;

 private:
  QLabel* myCount;
};

}  // namespace corvane::map
