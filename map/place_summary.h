#pragma once

#include <functional>

#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QWidget>

#include "map/places/place.h"
#include "map/settings.h"

namespace corvane::map {

// Shows where a place leads and what comes with it, for the user to agree to. If the user has used
// the server encrypted before, its certificate stays the trusted one; the place's takes its place
// only if the user ticks it, under a warning.
class PlaceSummary : public QWidget {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PlaceSummary)

 public:
  // `known` is what the user has used with that host and port, null if nothing.
  PlaceSummary(const Place& place, const RecentServer* known, QWidget* parent);

  // The encryption and fingerprint to connect with.
  bool IsEncrypted() const { return myIsEncrypted; }
  const QByteArray& Fingerprint() const;
  // Whether the user wants the place's pictures and landmarks.
  bool WantsContent() const { return chkContent->isChecked(); }

  // Fingerprint() has changed.
  std::function<void()> TrustChanged;

  // The controls. The widget owns them; chkContent and chkReplace are hidden if there is nothing to
  // ask.
  QLabel* lblServer;
  QLabel* lblNetwork;
  QLabel* lblEncryption;
  QLabel* lblWarning;
  QCheckBox* chkReplace;
  QCheckBox* chkContent;

 private:
  QString EncryptionText() const;

  QByteArray myOffered;
  QByteArray myTrusted;
  bool myIsEncrypted;
};

}  // namespace corvane::map
