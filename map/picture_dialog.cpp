#include "map/picture_dialog.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QImageReader>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "map/pictures/picture_fit.h"

namespace corvane::map {
namespace {

constexpr double kMaxNumber = 1e9;

QDoubleSpinBox* NumberField(double value, double min, double max, int decimals, QWidget* parent) {
  auto* field = new QDoubleSpinBox(parent);
  field->setRange(min, max);
  field->setDecimals(decimals);
  field->setValue(value);
  return field;
}

// A coordinate that is not known at first: its smallest value, which is shown as a dash.
QDoubleSpinBox* UnknownField(const QString& name, QWidget* parent) {
  QDoubleSpinBox* field = NumberField(-kMaxNumber, -kMaxNumber, kMaxNumber, 2, parent);
  field->setSpecialValueText(QStringLiteral("-"));
  field->setAccessibleName(name);
  field->setButtonSymbols(QDoubleSpinBox::NoButtons);
  return field;
}

}  // namespace

PictureDialog::PictureDialog(int facet, const MapPicture& picture, const QString& cacheFolder,
                             QWidget& owner)
    : QDialog(&owner),
      preview(new PicturePreview(this)),
      rdoNone(new QRadioButton(tr("&No picture, a grid"), this)),
      rdoImage(new QRadioButton(tr("An &image"), this)),
      rdoTiles(new QRadioButton(tr("A folder of &tiles, z/x/y"), this)),
      txtPath(new QLineEdit(picture.path, this)),
      btnBrowse(new QPushButton(tr("&Browse..."), this)),
      lblState(new QLabel(this)),
      lblPlaces(new QLabel(this)),
      spnX{UnknownField(tr("X of place 1"), this), UnknownField(tr("X of place 2"), this)},
      spnY{UnknownField(tr("Y of place 1"), this), UnknownField(tr("Y of place 2"), this)},
      spnLeft(NumberField(picture.corner.x(), -kMaxNumber, kMaxNumber, 2, this)),
      spnTop(NumberField(picture.corner.y(), -kMaxNumber, kMaxNumber, 2, this)),
      spnScale(NumberField(picture.unitsPerPixel, 0.000001, 10'000, 6, this)),
      btnOK(new QPushButton(tr("OK"), this)),
      btnCancel(new QPushButton(tr("Cancel"), this)),
      myPictures(cacheFolder) {
  setObjectName(QStringLiteral("PictureDialog"));
  setWindowTitle(tr("Picture of Facet %1").arg(facet));
  setAttribute(Qt::WA_DeleteOnClose);
  rdoNone->setChecked(picture.kind == MapPicture::Kind::None);
  rdoImage->setChecked(picture.kind == MapPicture::Kind::Image);
  rdoTiles->setChecked(picture.kind == MapPicture::Kind::Tiles);
  txtPath->setAccessibleName(tr("File or folder"));
  LayOut();
  Wire();
  Try();
}

void PictureDialog::LayOut() {
  for (QLabel* label : {lblState, lblPlaces}) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
  }
  // Room for the longest text, so that the fields below do not move while the user types.
  lblPlaces->setMinimumHeight(3 * fontMetrics().lineSpacing());
  auto* path = new QHBoxLayout;
  path->addWidget(txtPath);
  path->addWidget(btnBrowse);
  auto* grpPlaces = new QGroupBox(tr("Two places that you know"), this);
  auto* places = new QVBoxLayout(grpPlaces);
  places->addWidget(lblPlaces);
  for (std::size_t i = 0; i < PicturePreview::kPlaces; ++i) {
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(tr("Place %1: X").arg(i + 1), grpPlaces));
    row->addWidget(spnX.at(i), 1);
    row->addWidget(new QLabel(tr("Y"), grpPlaces));
    row->addWidget(spnY.at(i), 1);
    places->addLayout(row);
  }
  for (const auto& [before, next] : {std::pair(spnX[0], spnY[0]), std::pair(spnY[0], spnX[1]),
                                     std::pair(spnX[1], spnY[1]), std::pair(spnY[1], spnLeft)})
    setTabOrder(before, next);
  auto* grpNumbers = new QGroupBox(tr("Or its numbers"), this);
  auto* numbers = new QFormLayout(grpNumbers);
  numbers->addRow(tr("&Left edge at X:"), spnLeft);
  numbers->addRow(tr("To&p edge at Y:"), spnTop);
  numbers->addRow(tr("Map &units per pixel:"), spnScale);
  spnScale->setToolTip(tr("Of a folder, the pixels are those of its finest tiles."));
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  btnOK->setDefault(true);
  auto* controls = new QVBoxLayout;
  for (QRadioButton* choice : {rdoNone, rdoImage, rdoTiles})
    controls->addWidget(choice);
  controls->addLayout(path);
  controls->addWidget(lblState);
  controls->addWidget(grpPlaces);
  controls->addWidget(grpNumbers);
  controls->addStretch();
  controls->addLayout(buttons);
  auto* row = new QHBoxLayout(this);
  row->addWidget(preview, 1);
  row->addLayout(controls);
  preview->setMinimumSize(200, 200);
  resize(QSize(820, 480).boundedTo(parentWidget()->size()));
}

void PictureDialog::Wire() {
  for (QRadioButton* choice : {rdoNone, rdoImage, rdoTiles}) {
    if (choice->isChecked()) choice->setFocus();
    connect(choice, &QRadioButton::clicked, this, [this] { Try(); });
  }
  connect(txtPath, &QLineEdit::textChanged, this, [this] { Enable(); });
  connect(txtPath, &QLineEdit::editingFinished, this, [this] { Try(); });
  connect(btnBrowse, &QPushButton::clicked, this, [this] { Browse(); });
  connect(btnOK, &QPushButton::clicked, this, [this] { Confirm(); });
  connect(btnCancel, &QPushButton::clicked, this, [this] { reject(); });
  for (std::size_t i = 0; i < PicturePreview::kPlaces; ++i) {
    for (const QDoubleSpinBox* field : {spnX.at(i), spnY.at(i)})
      connect(field, &QDoubleSpinBox::valueChanged, this, [this] { FitToPlaces(); });
  }
  for (const QDoubleSpinBox* field : {spnLeft, spnTop, spnScale}) {
    connect(field, &QDoubleSpinBox::valueChanged, this, [this] {
      preview->ShowGrid(Current().corner, Current().unitsPerPixel);
      // The numbers count, whatever the places say.
      myFits = true;
      lblPlaces->clear();
      Enable();
    });
  }
  preview->Clicked = [this](QPointF pixel) { TakeClick(pixel); };
  myPictures.Progressed = [this](int percent) {
    lblState->setText(tr("Preparing the picture: %1 %").arg(percent));
  };
  myPictures.Completed = [this] { ShowWorking(*myPictures.FolderFor(myTried)); };
  myPictures.Failed = [this](const QString& text) { Fail(text); };
}

QString PictureDialog::NoTilesText(const QString& folder) {
  return tr("There are no tiles in %1.").arg(folder);
}

void PictureDialog::Enable() {
  const bool hasPicture = !rdoNone->isChecked();
  for (QWidget* field :
       std::initializer_list<QWidget*>{txtPath, btnBrowse, spnLeft, spnTop, spnScale}) {
    field->setEnabled(hasPicture);
  }
  for (std::size_t i = 0; i < PicturePreview::kPlaces; ++i) {
    for (QDoubleSpinBox* field : {spnX.at(i), spnY.at(i)})
      field->setEnabled(preview->Marked(i).has_value());
  }
  btnOK->setEnabled(!hasPicture || (!txtPath->text().isEmpty() && myFits));
}

void PictureDialog::Browse() {
  QString types;
  for (const QByteArray& format : QImageReader::supportedImageFormats())
    types += " *." + QString::fromLatin1(format);
  const QString path =
      rdoTiles->isChecked()
          ? QFileDialog::getExistingDirectory(this, tr("Folder of Tiles"), txtPath->text())
          : QFileDialog::getOpenFileName(this, tr("Picture"), txtPath->text(),
                                         tr("Pictures (%1)").arg(types.trimmed()));
  if (path.isEmpty()) return;
  txtPath->setText(path);
  Try();
}

MapPicture PictureDialog::Current() const {
  MapPicture picture;
  if (rdoNone->isChecked()) return picture;
  picture.kind = rdoImage->isChecked() ? MapPicture::Kind::Image : MapPicture::Kind::Tiles;
  // Absolute, because it is remembered, as with --map.
  if (!txtPath->text().isEmpty()) picture.path = QFileInfo(txtPath->text()).absoluteFilePath();
  picture.corner = {spnLeft->value(), spnTop->value()};
  picture.unitsPerPixel = spnScale->value();
  return picture;
}

void PictureDialog::Try() {
  const MapPicture picture = Current();
  if (picture.kind == myTried.kind && picture.path == myTried.path) return Enable();
  myPictures.Stop();
  myTried = picture;
  myWorks = false;
  myFits = true;
  lblState->clear();
  preview->Show({});
  lblPlaces->clear();
  Enable();
  if (picture.path.isEmpty()) return;
  if (const std::optional<QString> folder = myPictures.FolderFor(picture)) ShowWorking(*folder);
}

void PictureDialog::ShowWorking(const QString& folder) {
  const std::optional<TilePyramid> pyramid = TilePyramid::Open(folder);
  if (!pyramid) return Fail(NoTilesText(folder));
  myWorks = true;
  lblState->clear();
  preview->Show(pyramid);
  preview->ShowGrid(Current().corner, Current().unitsPerPixel);
  lblPlaces->setText(
      tr("Click a place on the picture that you know in the game, and type its "
         "coordinates. Then another one, far from it."));
  Enable();
  if (myConfirms) Confirm();
}

void PictureDialog::Fail(const QString& text) {
  // The next attempt with the same file is a new one.
  myTried = {};
  myConfirms = false;
  lblState->setText(text);
  Enable();
}

// The first click is place 1, the second place 2; from then on a click moves the nearer one.
void PictureDialog::TakeClick(QPointF pixel) {
  std::size_t number = 0;
  if (preview->Marked(0)) {
    const auto distance = [&](std::size_t i) {
      return (*preview->Marked(i) - pixel).manhattanLength();
    };
    number = !preview->Marked(1) || distance(1) < distance(0) ? 1 : 0;
  }
  preview->Mark(number, pixel);
  Enable();
  spnX.at(number)->setFocus();
  spnX.at(number)->selectAll();
  FitToPlaces();
}

void PictureDialog::FitToPlaces() {
  std::array<KnownPlace, PicturePreview::kPlaces> places;
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (!preview->Marked(i) || spnX.at(i)->value() == -kMaxNumber ||
        spnY.at(i)->value() == -kMaxNumber)
      return;
    places.at(i) = {*preview->Marked(i), {spnX.at(i)->value(), spnY.at(i)->value()}};
  }
  const PictureFit fit = FitPicture(places[0], places[1], preview->Side());
  myFits = fit.error.isEmpty();
  lblPlaces->setText(myFits ? tr("The grid shows where the picture lies.") : fit.error);
  if (myFits) {
    const QSignalBlocker blockers[] = {QSignalBlocker(spnLeft), QSignalBlocker(spnTop),
                                       QSignalBlocker(spnScale)};
    spnLeft->setValue(fit.corner.x());
    spnTop->setValue(fit.corner.y());
    spnScale->setValue(fit.unitsPerPixel);
    preview->ShowGrid(Current().corner, Current().unitsPerPixel);
  }
  Enable();
}

void PictureDialog::Confirm() {
  Try();
  const MapPicture picture = Current();
  const bool works = picture.kind == MapPicture::Kind::None || myWorks;
  // It is being cut, or has failed just now.
  myConfirms = !works && myTried.kind != MapPicture::Kind::None;
  if (!works) return;
  if (Chosen) Chosen(picture);
  accept();
}

}  // namespace corvane::map
