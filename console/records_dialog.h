#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "console/dialog.h"
#include "console/list_box.h"
#include "console/records_model.h"

namespace corvane {

// A list of database records with a button, and the Delete key, to delete the selected ones
// without asking. Shows what the database held when it was opened.
class RecordsDialog : public Dialog {
 public:
  // What deletes records in the database and commits.
  using DeleteRecords = std::function<void(const std::vector<std::int64_t>& ids)>;

  RecordsDialog(const QString& name, const QString& title, QStringList headings,
                std::vector<RecordsModel::Record> records, DeleteRecords deleteRecords,
                QWidget& owner);

  QPushButton* btnDel;

 protected:
  ListBox* myList;

 private:
  void btnDel_Action();

  RecordsModel myRecords;
  DeleteRecords myDeleteRecords;
};

}  // namespace corvane
