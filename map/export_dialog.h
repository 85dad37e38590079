#pragma once

#include <functional>
#include <thread>

#include <QCoreApplication>
#include <QDialog>

#include "map/recording/recording.h"

namespace corvane::map {

// Exports a recording in a thread and shows the progress. Deletes itself at the end. "Cancel" stops
// the export, which then leaves no file.
class ExportDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::ExportDialog)

 public:
  ExportDialog(const Recording& recording, const QString& path, QWidget& owner);

  // The error is empty if there is none. Not raised after "Cancel".
  std::function<void(const QString& error)> Ended;

 private:
  std::jthread myThread;  // the last member, to end before the others
};

}  // namespace corvane::map
