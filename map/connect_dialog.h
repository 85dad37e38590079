#pragma once

#include <functional>

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include "client/ending.h"
#include "map/place_summary.h"
#include "map/places/place.h"
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
  // Shows the place in place of the fields that it fills. Asks only for the user name and, if the
  // place has none, the password.
  void Offer(const Place& place);
  // Null without an offered place.
  PlaceSummary* Summary() const { return mySummary; }
  // Whether the user wants the offered place's pictures and landmarks.
  bool WantsContent() const { return mySummary != nullptr && mySummary->WantsContent(); }
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
  // Null if the user has not logged in at that host and port.
  const RecentServer* Known(const QString& host, int port) const;
  void Fill(const RecentServer& server);
  void FillFingerprint(const QByteArray& fingerprint) const;
  // For another server than before. Ticks encryption if it is remembered, and never unticks it.
  // Keeps a fingerprint that the user has typed.
  void FillRememberedTls() const;
  void RemoveRecent();
  void EnableControls() const;
  void Try();
  QWidget* FieldAtFault(client::Ending::Cause cause) const;
  void ShowFault(const QString& text, QWidget& field) const;
  void SetTrying(bool isTrying);

  QList<RecentServer> myRecent;
  QByteArray myDigest;                // remembered or given; used while the password field is empty
  QWidget* myFields;                  // all but the buttons
  QFormLayout* myForm;                // of the fields
  PlaceSummary* mySummary = nullptr;  // of an offered place
  bool myIsTrying = false;
};

}  // namespace corvane::map
