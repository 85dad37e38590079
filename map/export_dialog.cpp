#include "map/export_dialog.h"

#include <QDialogButtonBox>
#include <QProgressBar>
#include <QVBoxLayout>

#include "map/recording/recording_export.h"

namespace corvane::map {

ExportDialog::ExportDialog(const Recording& recording, const QString& path, QWidget& owner)
    : QDialog(&owner) {
  setWindowTitle(tr("Export"));
  setAttribute(Qt::WA_DeleteOnClose);
  auto* bar = new QProgressBar(this);
  bar->setAccessibleName(tr("Progress of the export"));
  bar->setMinimumWidth(300);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  auto* column = new QVBoxLayout(this);
  column->addWidget(bar);
  column->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });

  myThread = std::jthread([this, bar, recording, path](const std::stop_token& stops) {
    const auto progress = [bar](int percent) {
      QMetaObject::invokeMethod(
          bar, [bar, percent] { bar->setValue(percent); }, Qt::QueuedConnection);
    };
    const QString error = Export(recording, path, stops, progress);
    const auto end = [this, error] {
      if (Ended && isVisible()) Ended(error);
      accept();
    };
    QMetaObject::invokeMethod(this, end, Qt::QueuedConnection);
  });
}

}  // namespace corvane::map
