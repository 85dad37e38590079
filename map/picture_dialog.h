#pragma once

#include <array>
#include <functional>
#include <optional>

#include <QCoreApplication>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "map/picture_preview.h"
#include "map/pictures/map_picture.h"
#include "map/pictures/map_pictures.h"

namespace corvane::map {

// Asks for the picture of a facet and its position on the map, which the user gives by two known
// places or by numbers. Cuts an image before it is chosen and shows it, so that a picture that does
// not work is reported here and cannot be chosen. Deletes itself when closed.
class PictureDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::PictureDialog)

 public:
  PictureDialog(int facet, const MapPicture& picture, const QString& cacheFolder, QWidget& owner);

  static QString NoTilesText(const QString& folder);

  // The picture works.
  std::function<void(const MapPicture&)> Chosen;

  // The controls, in tab order. The dialog owns them.
  PicturePreview* preview;
  QRadioButton* rdoNone;
  QRadioButton* rdoImage;
  QRadioButton* rdoTiles;
  QLineEdit* txtPath;
  QPushButton* btnBrowse;
  QLabel* lblState;   // of the picture: progress or failure
  QLabel* lblPlaces;  // what to do next, or why the places do not fit
  std::array<QDoubleSpinBox*, PicturePreview::kPlaces> spnX;
  std::array<QDoubleSpinBox*, PicturePreview::kPlaces> spnY;
  QDoubleSpinBox* spnLeft;
  QDoubleSpinBox* spnTop;
  QDoubleSpinBox* spnScale;
  QPushButton* btnOK;
  QPushButton* btnCancel;

 private:
  void LayOut();
  void Wire();
  void Enable();
  void Browse();
  // What the controls say.
  MapPicture Current() const;
  void Try();
  void ShowWorking(const QString& folder);
  void Fail(const QString& text);
  void TakeClick(QPointF pixel);
  void FitToPlaces();
  void Confirm();

  MapPictures myPictures;
  MapPicture myTried;  // it works, or is being cut
  bool myWorks = false;
  bool myConfirms = false;  // as soon as it works
  bool myFits = true;       // to the places, if both are given
};

}  // namespace corvane::map
