#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "console/dialog.h"
#include "console/list_box.h"
#include "console/records_model.h"

namespace corvane {

// A list of database records. A button and the Delete key delete the selected records without
// asking. Shows the records as they were when the dialog opened.
class RecordsDialog : public Dialog {
 public:
  // Deletes records in the database and commits.
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
