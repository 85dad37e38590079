#include "map/landmark_dialog.h"

#include <limits>

#include <QColorDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "map/landmark_art.h"
#include "map/places/landmark_icons.h"

namespace corvane::map {
namespace {

constexpr int kIconsInRow = 8;

}  // namespace

LandmarkDialog::LandmarkDialog(const QString& title, const Landmark& landmark, QWidget& owner)
    : QDialog(&owner),
      txtName(new QLineEdit(landmark.name, this)),
      lstIcons(new QListWidget(this)),
      btnColour(new QPushButton(tr("&Colour..."), this)),
      txtNote(new QPlainTextEdit(landmark.note, this)),
      spnX(new QDoubleSpinBox(this)),
      spnY(new QDoubleSpinBox(this)),
      spnFacet(new QSpinBox(this)),
      btnOK(new QPushButton(tr("OK"), this)),
      btnCancel(new QPushButton(tr("Cancel"), this)),
      myLandmark(landmark) {
  setObjectName(QStringLiteral("LandmarkDialog"));
  setWindowTitle(title);
  setAttribute(Qt::WA_DeleteOnClose);
  txtName->setMaxLength(Landmark::kMaxName);
  txtNote->setTabChangesFocus(true);
  for (QDoubleSpinBox* field : {spnX, spnY})
    field->setRange(-Landmark::kMaxCoordinate, Landmark::kMaxCoordinate);
  spnX->setValue(landmark.at.x());
  spnY->setValue(landmark.at.y());
  spnFacet->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
  spnFacet->setValue(landmark.facet);
  lstIcons->setAccessibleName(tr("Icon"));
  lstIcons->setViewMode(QListView::IconMode);
  lstIcons->setMovement(QListView::Static);
  lstIcons->setUniformItemSizes(true);
  lstIcons->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  lstIcons->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  lstIcons->setIconSize(QSize(LandmarkArt::kSide, LandmarkArt::kSide));
  lstIcons->setGridSize(lstIcons->iconSize() + QSize(12, 12));
  for (const LandmarkIcon& icon : kLandmarkIcons) {
    QString name = QString::fromLatin1(icon.name);
    name[0] = name[0].toUpper();
    auto* item = new QListWidgetItem(lstIcons);
    item->setToolTip(name);
    item->setData(Qt::AccessibleTextRole, name);
  }
  lstIcons->setCurrentRow(static_cast<int>(LandmarkArt::NumberOf(landmark.icon)));
  ShowIcons();
  LayOut();
  connect(btnColour, &QPushButton::clicked, this, [this] { AskColour(); });
  connect(txtNote, &QPlainTextEdit::textChanged, this,
          [this] { btnOK->setEnabled(txtNote->toPlainText().size() <= Landmark::kMaxNote); });
  connect(btnOK, &QPushButton::clicked, this, [this] { Confirm(); });
  connect(btnCancel, &QPushButton::clicked, this, [this] { reject(); });
}

void LandmarkDialog::LayOut() {
  const int frame = 2 * lstIcons->frameWidth();
  const int rows = (lstIcons->count() + kIconsInRow - 1) / kIconsInRow;
  const QSize cell = lstIcons->gridSize();
  lstIcons->setFixedSize(cell.width() * kIconsInRow + frame + 4, cell.height() * rows + frame + 4);
  txtNote->setFixedHeight(4 * fontMetrics().lineSpacing());
  txtNote->setPlaceholderText(tr("Up to %1 characters").arg(Landmark::kMaxNote));
  auto* form = new QFormLayout;
  form->addRow(tr("&Name:"), txtName);
  form->addRow(tr("&Icon:"), lstIcons);
  form->addRow(QString(), btnColour);
  form->addRow(tr("No&te:"), txtNote);
  form->addRow(tr("&X:"), spnX);
  form->addRow(tr("&Y:"), spnY);
  form->addRow(tr("&Facet:"), spnFacet);
  btnColour->setAccessibleName(tr("Colour"));
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(btnOK);
  buttons->addWidget(btnCancel);
  btnOK->setDefault(true);
  auto* column = new QVBoxLayout(this);
  column->addLayout(form);
  column->addLayout(buttons);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

void LandmarkDialog::ShowIcons() {
  for (int i = 0; i < lstIcons->count(); ++i)
    lstIcons->item(i)->setIcon(
        LandmarkArt::Picture(static_cast<std::size_t>(i), myLandmark.colour, devicePixelRatioF()));
  QPixmap swatch(btnColour->iconSize());
  swatch.fill(QColor::fromRgb(myLandmark.colour));
  btnColour->setIcon(swatch);
}

void LandmarkDialog::AskColour() {
  auto* dialog = new QColorDialog(QColor::fromRgb(myLandmark.colour), this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QColorDialog::colorSelected, this, [this](const QColor& colour) {
    myLandmark.colour = colour.rgb();
    ShowIcons();
  });
  dialog->open();
}

void LandmarkDialog::Confirm() {
  myLandmark.name = txtName->text().trimmed();
  const auto icon = static_cast<std::size_t>(lstIcons->currentRow());
  // An unknown icon stays, unless the user has chosen one.
  if (icon != LandmarkArt::NumberOf(myLandmark.icon))
    myLandmark.icon = QString::fromLatin1(kLandmarkIcons[icon].name);
  myLandmark.note = txtNote->toPlainText();
  myLandmark.at = {spnX->value(), spnY->value()};
  myLandmark.facet = spnFacet->value();
  if (Confirmed) Confirmed(myLandmark);
  accept();
}

}  // namespace corvane::map
