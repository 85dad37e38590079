#pragma once

#include <functional>

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include "map/settings.h"

namespace corvane::map {

// Asks where to log in and as whom. It stays open while the program tries, and says what was
// refused. It keeps what was typed when the user closes it, so that it can be opened again.
class ConnectDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::ConnectDialog)

 public:
  ConnectDialog(const QList<RecentServer>& recent, QWidget& owner);

  // The digest of the password is always there; whether to keep it is the user's choice.
  std::function<void(const RecentServer& server, bool keepsDigest)> ConnectRequested;
  // The user gives up while the program tries.
  std::function<void()> Cancelled;

  // Tries what the command line says, as if it were typed.
  void TryGiven(const RecentServer& server);
  // The attempt is over; the text says why.
  void ShowFailure(const QString& text);

  // The controls, in tab order. The dialog owns them.
  QComboBox* cmbRecent;
  QLineEdit* txtHost;
  QSpinBox* spnPort;
  QLineEdit* txtNetwork;
  QLineEdit* txtPassword;
  QLineEdit* txtUser;
  QCheckBox* chkRemember;
  QPushButton* btnConnect;
  QPushButton* btnCancel;
  QLabel* lblMessage;

  void reject() override;

 private:
  void LayOut();
  void Fill(const RecentServer& server);
  void Check() const;
  void Try();
  void SetTrying(bool isTrying);

  QList<RecentServer> myRecent;
  QByteArray myDigest;  // remembered or given, for as long as no password is typed
  bool myIsTrying = false;
};

}  // namespace corvane::map
