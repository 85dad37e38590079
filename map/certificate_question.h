#pragma once

#include <functional>

#include <QByteArray>
#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QString>

#include "client/ending.h"

namespace corvane::map {

// Shows a certificate for which no authority vouches, and asks whether to trust it. Deletes itself
// when closed.
class CertificateQuestion : public QMessageBox {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::CertificateQuestion)

 public:
  // `ending` is that of the attempt.
  CertificateQuestion(const QString& host, const client::Ending& ending, QWidget& owner);

  std::function<void(const QByteArray& fingerprint)> Trusted;

  // The buttons. The dialog owns them.
  QPushButton* btnTrust;
  QPushButton* btnCancel;
};

}  // namespace corvane::map
