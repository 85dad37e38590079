#pragma once

#include <cstdint>
#include <vector>

#include <QAbstractTableModel>
#include <QStringList>

namespace corvane {

// Database records as rows of a list; each row has its record's "id".
class RecordsModel : public QAbstractTableModel {
 public:
  struct Record {
    std::int64_t id;
    QStringList columns;
  };

  RecordsModel(QStringList headings, std::vector<Record> records);

  std::int64_t IdAt(int row) const;
  // `rows` must be in ascending order.
  void Remove(const std::vector<int>& rows);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QStringList myHeadings;
  std::vector<Record> myRecords;
};

}  // namespace corvane
