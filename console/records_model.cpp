#include "console/records_model.h"

#include <cstddef>
#include <utility>

namespace corvane {

RecordsModel::RecordsModel(QStringList headings, std::vector<Record> records)
    : myHeadings(std::move(headings)), myRecords(std::move(records)) {}

std::int64_t RecordsModel::IdAt(int row) const {
  return myRecords[static_cast<std::size_t>(row)].id;
}

void RecordsModel::Remove(const std::vector<int>& rows) {
  // From the bottom up, adjacent rows together.
  for (std::size_t end = rows.size(); end > 0;) {
    std::size_t first = end - 1;
    while (first > 0 && rows[first - 1] == rows[first] - 1)
      --first;
    beginRemoveRows({}, rows[first], rows[end - 1]);
    myRecords.erase(myRecords.begin() + rows[first], myRecords.begin() + rows[end - 1] + 1);
    endRemoveRows();
    end = first;
  }
}

int RecordsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(myRecords.size());
}

int RecordsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(myHeadings.size());
}

QVariant RecordsModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole || !index.isValid()) return {};
  return myRecords[static_cast<std::size_t>(index.row())].columns[index.column()];
}

QVariant RecordsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
  return myHeadings[section];
}

}  // namespace corvane
