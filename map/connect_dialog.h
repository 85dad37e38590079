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

#include "client/ending.h"
#include "map/settings.h"

namespace corvane::map {

// Asks for a server and an account. Stays open during an attempt to connect and shows why it
// failed. A closed dialog keeps its input and can be opened again.
class ConnectDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::ConnectDialog)

 public:
  ConnectDialog(const QList<RecentServer>& recent, QWidget& owner);

  // `server` has the password's digest; `keepsDigest` is whether the user wants it remembered.
  std::function<void(const RecentServer& server, bool keepsDigest)> ConnectRequested;
  // The user cancelled during an attempt.
  std::function<void()> Cancelled;
  // The user removed the server from the list.
  std::function<void(const RecentServer& server)> Removed;

  // Fills the fields with the command line's values and connects.
  void TryGiven(const RecentServer& server);
  // Fills in the fingerprint of a certificate that the user trusts, and connects.
  void TryTrusting(const QByteArray& fingerprint);
  // Ends the attempt, shows the reason, and moves the focus to the field at fault.
  void ShowFailure(const client::Ending& ending);

  // The controls, in tab order. The dialog owns them.
  QComboBox* cmbRecent;
  QPushButton* btnRemove;
  QLineEdit* txtHost;
  QSpinBox* spnPort;
  QCheckBox* chkEncrypted;
  QLineEdit* txtFingerprint;
  QLineEdit* txtNetwork;
  QLineEdit* txtPassword;
  QCheckBox* chkShow;
  QLineEdit* txtUser;
  QCheckBox* chkRemember;
  QPushButton* btnConnect;
  QPushButton* btnCancel;
  QLabel* lblMessage;

  void reject() override;

 private:
  void LayOut();
  void Fill(const RecentServer& server);
  void FillFingerprint(const QByteArray& fingerprint) const;
  // For another server than before. Ticks encryption if it is remembered, and never unticks it.
  // Keeps a fingerprint that the user has typed.
  void FillRememberedTls() const;
  void RemoveRecent();
  void Check() const;
  void Try();
  QWidget* FieldAtFault(client::Ending::Cause cause) const;
  void ShowFault(const QString& text, QWidget& field) const;
  void SetTrying(bool isTrying);

  QList<RecentServer> myRecent;
  QByteArray myDigest;  // remembered or given; used while the password field is empty
  bool myIsTrying = false;
};

}  // namespace corvane::map
