#include "map/recordings_dialog.h"

#include <utility>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLocale>
#include <QMessageBox>
#include <QVBoxLayout>

#include "framework/dates.h"
#include "framework/text.h"
#include "framework/visible_text.h"
#include "map/export_dialog.h"

namespace corvane::map {
namespace {

constexpr std::size_t kMaxListedName = 100;
constexpr int kDuration = 3;  // a column, followed by other numbers
constexpr qint64 kTurn = 20;  // ms

QSpinBox* LimitField(int value, int min, int max, const QString& unit, QWidget* parent) {
  auto* field = new QSpinBox(parent);
  field->setRange(min, max);
  field->setValue(value);
  field->setSuffix(' ' + unit);
  return field;
}

QString DurationText(qint64 duration) {
  const qint64 seconds = duration / 1000;
  return QString::asprintf("%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

}  // namespace

RecordingsDialog::RecordingsDialog(RecordingFolder folder, const RecordingLimits& limits,
                                   QWidget& owner)
    : QDialog(&owner),
      lstRecordings(new QTreeWidget(this)),
      btnPlay(new QPushButton(tr("&Play"), this)),
      btnExport(new QPushButton(tr("&Export..."), this)),
      btnDelete(new QPushButton(tr("&Delete..."), this)),
      btnDeleteAll(new QPushButton(tr("Delete &All..."), this)),
      spnDays(LimitField(limits.days, RecordingLimits::kMinDays, RecordingLimits::kMaxDays,
                         tr("days"), this)),
      spnMebibytes(LimitField(limits.mebibytes, RecordingLimits::kMinMebibytes,
                              RecordingLimits::kMaxMebibytes, tr("MiB"), this)),
      btnClose(new QPushButton(tr("Close"), this)),
      lblNote(new QLabel(this)),
      myFolder(std::move(folder)) {
  setObjectName(QStringLiteral("RecordingsDialog"));
  setWindowTitle(tr("Recordings"));
  setAttribute(Qt::WA_DeleteOnClose);
  LayOut();
  connect(lstRecordings, &QTreeWidget::itemSelectionChanged, this, [this] { EnableButtons(); });
  connect(lstRecordings, &QTreeWidget::itemActivated, btnPlay, &QPushButton::click);
  connect(btnPlay, &QPushButton::clicked, this, [this] {
    if (Played) Played(*Selected().front());
    accept();
  });
  connect(btnExport, &QPushButton::clicked, this, [this] { Export(); });
  connect(btnDelete, &QPushButton::clicked, this,
          [this] { Ask(tr("Delete the selected recordings?"), [this] { DeleteSelected(); }); });
  connect(btnDeleteAll, &QPushButton::clicked, this,
          [this] { Ask(tr("Delete all recordings, of all networks?"), [this] { DeleteAll(); }); });
  connect(this, &QDialog::finished, this, [this] {
    if (LimitsChosen) LimitsChosen({spnDays->value(), spnMebibytes->value()});
  });
  connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
  myMore.setSingleShot(true);
  connect(&myMore, &QTimer::timeout, this, [this] { ListMore(); });
  List();
}

void RecordingsDialog::LayOut() {
  lstRecordings->setAccessibleName(tr("Recordings"));
  lstRecordings->setHeaderLabels(
      {tr("Network"), tr("Server"), tr("Begin"), tr("Duration"), tr("Size"), tr("Members")});
  lstRecordings->setRootIsDecorated(false);
  lstRecordings->setUniformRowHeights(true);
  lstRecordings->setSelectionMode(QAbstractItemView::ExtendedSelection);
  lstRecordings->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  lstRecordings->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  lstRecordings->header()->setStretchLastSection(false);
  lblNote->setTextFormat(Qt::PlainText);
  lblNote->setWordWrap(true);
  lblNote->hide();
  spnDays->setAccessibleName(tr("Days to keep"));
  spnMebibytes->setAccessibleName(tr("Size to keep"));

  auto* buttons = new QHBoxLayout;
  for (QPushButton* button : {btnPlay, btnExport, btnDelete, btnDeleteAll})
    buttons->addWidget(button);
  buttons->addStretch();
  auto* limits = new QHBoxLayout;
  auto* label = new QLabel(tr("&Keep for"), this);
  label->setBuddy(spnDays);
  limits->addWidget(label);
  limits->addWidget(spnDays);
  limits->addWidget(new QLabel(tr("and at most"), this));
  limits->addWidget(spnMebibytes);
  limits->addStretch();
  limits->addWidget(btnClose);
  auto* column = new QVBoxLayout(this);
  column->addWidget(lstRecordings);
  column->addWidget(lblNote);
  column->addLayout(buttons);
  column->addLayout(limits);
  btnPlay->setDefault(true);
  resize(620, 360);
}

void RecordingsDialog::List() {
  myPaths = myFolder.Paths();
  myRecordings.clear();
  lstRecordings->clear();
  ListMore();
}

// A file of a day takes some milliseconds to open.
void RecordingsDialog::ListMore() {
  QElapsedTimer time;
  for (time.start(); !myPaths.isEmpty() && time.elapsed() < kTurn;) {
    if (const auto recording = Recording::Open(myPaths.takeFirst())) Add(*recording);
  }
  if (!myPaths.isEmpty()) myMore.start(0);
  if (Selected().empty()) lstRecordings->setCurrentItem(lstRecordings->topLevelItem(0));
  EnableButtons();
}

void RecordingsDialog::Add(const Recording& recording) {
  const auto visible = [](const QString& text) {
    return VisibleText(TextFromDisplay(text), kMaxListedName);
  };
  const QString duration = DurationText(recording.End() - recording.Begin());
  auto* row = new QTreeWidgetItem(
      lstRecordings,
      {visible(recording.Source().network), visible(recording.Source().host),
       DisplayText(ShortDateAndTime(QDateTime::fromMSecsSinceEpoch(recording.Begin()))),
       recording.IsDamaged() ? tr("%1, then damaged").arg(duration) : duration,
       QLocale().formattedDataSize(recording.Bytes()), QString::number(recording.Members())});
  row->setSizeHint(0, QSize(0, fontMetrics().height() + 6));
  for (int column = kDuration; column < lstRecordings->columnCount(); ++column)
    row->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
  myRecordings.push_back(recording);
}

std::vector<const Recording*> RecordingsDialog::Selected() const {
  std::vector<const Recording*> selected;
  for (const QModelIndex& index : lstRecordings->selectionModel()->selectedRows())
    selected.push_back(&myRecordings[static_cast<std::size_t>(index.row())]);
  return selected;
}

void RecordingsDialog::EnableButtons() {
  const std::size_t count = Selected().size();
  btnPlay->setEnabled(count == 1);
  btnExport->setEnabled(count == 1);
  btnDelete->setEnabled(count > 0);
}

void RecordingsDialog::Export() {
  const QString csv = tr("CSV (*.csv)");
  QFileDialog dialog(this, tr("Export"), QDir::homePath(), csv + tr(";;GeoJSON (*.geojson)"));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  // The dialog asks before it overwrites the file that gets the suffix.
  dialog.setDefaultSuffix(QStringLiteral("csv"));
  connect(&dialog, &QFileDialog::filterSelected, this, [&](const QString& filter) {
    dialog.setDefaultSuffix(filter == csv ? QStringLiteral("csv") : QStringLiteral("geojson"));
  });
  if (dialog.exec() == QDialog::Accepted) ExportTo(dialog.selectedFiles().value(0));
}

void RecordingsDialog::ExportTo(const QString& path) {
  auto* dialog = new ExportDialog(*Selected().front(), path, *this);
  dialog->Ended = [this, path](const QString& error) {
    Note(error.isEmpty() ? tr("%1 is written.").arg(path) : error);
  };
  dialog->open();
}

void RecordingsDialog::Note(const QString& text) const {
  lblNote->setText(text);
  lblNote->setVisible(!text.isEmpty());
}

void RecordingsDialog::Ask(const QString& question, const std::function<void()>& act) {
  auto* box = new QMessageBox(QMessageBox::Question, windowTitle(), question,
                              QMessageBox::Yes | QMessageBox::No, this);
  box->setObjectName(QStringLiteral("DeleteQuestion"));
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setDefaultButton(QMessageBox::No);
  connect(box->button(QMessageBox::Yes), &QAbstractButton::clicked, this, act);
  box->open();
}

void RecordingsDialog::DeleteSelected() {
  bool areGone = true;
  for (const Recording* recording : Selected())
    areGone &= QFile::remove(recording->Path()) || !QFile::exists(recording->Path());
  ShowDeleted(areGone);
}

void RecordingsDialog::DeleteAll() {
  if (DeletingAll) DeletingAll();
  ShowDeleted(myFolder.DeleteAll());
}

void RecordingsDialog::ShowDeleted(bool areGone) {
  Note(areGone ? QString() : tr("Not all files could be deleted."));
  List();
}

}  // namespace corvane::map
