#pragma once

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "map/places/place.h"

namespace corvane::map {

// Shows a place as a link, and saves it as a file with what the user ticks. Deletes itself when
// closed.
class ShareDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::ShareDialog)

 public:
  // `leftOut` has a line for each picture that cannot be shared.
  ShareDialog(Place place, const QStringList& leftOut, QWidget& owner);

  // Writes the file, or shows why that failed.
  void Save(const QString& path);

  // The controls, in tab order. The dialog owns them.
  QLineEdit* txtLink;
  QPushButton* btnCopy;
  QCheckBox* chkPictures;
  QCheckBox* chkLandmarks;
  QCheckBox* chkPassword;
  QPushButton* btnSave;
  QPushButton* btnClose;
  QLabel* lblMessage;

 private:
  void LayOut(const QStringList& leftOut);
  void AskForPath();

  Place myPlace;
};

}  // namespace corvane::map
