#pragma once

#include <functional>
#include <vector>

#include <QCoreApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QTreeWidget>

#include "map/recording/recording_folder.h"

namespace corvane::map {

// Lists the recordings, exports and deletes them, and asks what to keep. Deletes itself when
// closed.
class RecordingsDialog : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::RecordingsDialog)

 public:
  RecordingsDialog(RecordingFolder folder, const RecordingLimits& limits, QWidget& owner);

  std::function<void(const Recording&)> Played;
  // Raised before all files are deleted.
  std::function<void()> DeletingAll;
  // What to keep from now on. Raised when the dialog closes, so that a slip of the wheel deletes
  // nothing.
  std::function<void(const RecordingLimits&)> LimitsChosen;

  // Writes the selected recording, and notes the end of that below the list.
  void ExportTo(const QString& path);

  // The controls, in tab order. The dialog owns them.
  QTreeWidget* lstRecordings;
  QPushButton* btnPlay;
  QPushButton* btnExport;
  QPushButton* btnDelete;
  QPushButton* btnDeleteAll;
  QSpinBox* spnDays;
  QSpinBox* spnMebibytes;
  QPushButton* btnClose;
  QLabel* lblNote;

 private:
  void LayOut();
  // Lists the files in turns, so that many of them do not block the window.
  void List();
  void ListMore();
  void Add(const Recording& recording);
  void EnableButtons();
  void Export();
  void Note(const QString& text) const;
  // Calls `act` if the user agrees.
  void Ask(const QString& question, const std::function<void()>& act);
  void DeleteSelected();
  void DeleteAll();
  void ShowDeleted(bool areGone);
  std::vector<const Recording*> Selected() const;

  RecordingFolder myFolder;
  QStringList myPaths;  // not listed yet
  QTimer myMore;
  std::vector<Recording> myRecordings;  // in the order of the rows
};

}  // namespace corvane::map
