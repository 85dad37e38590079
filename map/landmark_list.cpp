#include "map/landmark_list.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLocale>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/landmark_art.h"

namespace corvane::map {
namespace {

enum LandmarkColumn { kLandmarkName, kLandmarkPlace, kLandmarkFacet, kLandmarkNote };

QString PlaceText(QPointF place) {
  const auto number = [](double value) {
    return QString::number(value, 'f', QLocale::FloatingPointShortest);
  };
  return QStringLiteral("%1, %2").arg(number(place.x()), number(place.y()));
}

}  // namespace

LandmarkList::LandmarkList(LandmarkBoard& board, QWidget& owner)
    : QDialog(&owner),
      txtSearch(new QLineEdit(this)),
      lstLandmarks(new QTreeWidget(this)),
      btnEdit(new QPushButton(tr("&Edit..."), this)),
      btnDelete(new QPushButton(tr("&Delete"), this)),
      btnClose(new QPushButton(tr("Close"), this)),
      lblCount(new QLabel(this)),
      myBoard(board) {
  setObjectName(QStringLiteral("LandmarkList"));
  setWindowTitle(tr("Landmarks"));
  txtSearch->setPlaceholderText(tr("Search"));
  txtSearch->setAccessibleName(tr("Search"));
  txtSearch->setClearButtonEnabled(true);
  lstLandmarks->setAccessibleName(tr("Landmarks"));
  lstLandmarks->setHeaderLabels({tr("Name"), tr("Place"), tr("Facet"), tr("Note")});
  lstLandmarks->setRootIsDecorated(false);
  lstLandmarks->setUniformRowHeights(true);
  lstLandmarks->setIconSize(QSize(LandmarkArt::kSide, LandmarkArt::kSide));
  lstLandmarks->sortByColumn(kLandmarkName, Qt::AscendingOrder);
  lstLandmarks->setSortingEnabled(true);
  LayOut();
  connect(txtSearch, &QLineEdit::textChanged, this, [this] { Search(); });
  // A click goes to a landmark again that is already selected.
  connect(lstLandmarks, &QTreeWidget::itemClicked, this, [this] {
    if (Current() != nullptr && Chosen) Chosen(*Current());
  });
  connect(lstLandmarks, &QTreeWidget::currentItemChanged, this, [this] {
    for (QPushButton* button : {btnEdit, btnDelete})
      button->setEnabled(Current() != nullptr);
    if (Current() != nullptr && Chosen) Chosen(*Current());
  });
  connect(lstLandmarks, &QTreeWidget::itemActivated, btnEdit, &QPushButton::click);
  connect(btnEdit, &QPushButton::clicked, this, [this] {
    if (EditRequested) EditRequested(*Current());
  });
  connect(btnDelete, &QPushButton::clicked, this, [this] {
    if (DeleteRequested) DeleteRequested(*Current());
  });
  connect(btnClose, &QPushButton::clicked, this, [this] { close(); });
  myChanged = board.Changed.Connect([this] { Fill(); });
  Fill();
}

void LandmarkList::LayOut() {
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(lblCount);
  buttons->addStretch();
  for (QPushButton* button : {btnEdit, btnDelete, btnClose}) {
    button->setAutoDefault(false);
    buttons->addWidget(button);
  }
  auto* column = new QVBoxLayout(this);
  column->addWidget(txtSearch);
  column->addWidget(lstLandmarks);
  column->addLayout(buttons);
  lstLandmarks->header()->resizeSection(kLandmarkName, 160);
  lstLandmarks->header()->resizeSection(kLandmarkFacet, 60);
  resize(480, 300);
}

void LandmarkList::Fill() {
  const QSignalBlocker blocker(lstLandmarks);
  const int selected = lstLandmarks->indexOfTopLevelItem(lstLandmarks->currentItem());
  lstLandmarks->clear();
  QList<QTreeWidgetItem*> items;
  LandmarkArt art;
  for (qsizetype i = 0; i < myBoard.All().size(); ++i) {
    const Landmark& landmark = myBoard.All()[i];
    auto* item = new QTreeWidgetItem;
    item->setText(kLandmarkName, VisibleText(TextFromDisplay(landmark.name)));
    item->setIcon(kLandmarkName, art.Cached(LandmarkArt::NumberOf(landmark.icon), landmark.colour,
                                            devicePixelRatioF()));
    item->setText(kLandmarkPlace, PlaceText(landmark.at));
    item->setData(kLandmarkFacet, Qt::DisplayRole, landmark.facet);
    item->setText(kLandmarkNote, VisibleText(TextFromDisplay(landmark.note.simplified())));
    item->setData(kLandmarkName, Qt::UserRole, i);
    items.append(item);
  }
  lstLandmarks->addTopLevelItems(items);
  if (selected >= 0)
    lstLandmarks->setCurrentItem(
        lstLandmarks->topLevelItem(std::min(selected, lstLandmarks->topLevelItemCount() - 1)));
  Search();
}

void LandmarkList::Search() {
  int found = 0;
  for (int i = 0; i < lstLandmarks->topLevelItemCount(); ++i) {
    QTreeWidgetItem* item = lstLandmarks->topLevelItem(i);
    const bool isFound =
        item->text(kLandmarkName).contains(txtSearch->text(), Qt::CaseInsensitive) ||
        item->text(kLandmarkNote).contains(txtSearch->text(), Qt::CaseInsensitive);
    item->setHidden(!isFound);
    found += isFound ? 1 : 0;
  }
  lblCount->setText(tr("%1 of %2").arg(found).arg(lstLandmarks->topLevelItemCount()));
  for (QPushButton* button : {btnEdit, btnDelete})
    button->setEnabled(Current() != nullptr);
}

const Landmark* LandmarkList::Current() const {
  const QTreeWidgetItem* item = lstLandmarks->currentItem();
  if (item == nullptr || item->isHidden()) return nullptr;
  return &myBoard.All()[item->data(kLandmarkName, Qt::UserRole).toLongLong()];
}

}  // namespace corvane::map
