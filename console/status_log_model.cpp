#include "console/status_log_model.h"

#include "framework/text.h"

namespace corvane {

StatusLogModel::StatusLogModel(std::size_t mostBytes)
    : myMostBytes(mostBytes), myAddRows([this] { AddRows(); }, Gathering::First::Now) {}

void StatusLogModel::Append(std::string_view prefix, std::string_view text) {
  myLog.Append(prefix, text);
  myAddRows.Note();
}

void StatusLogModel::Clear() {
  beginResetModel();
  myAddRows.Stop();
  myLog.Clear();
  myRows = 0;
  endResetModel();
}

int StatusLogModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : myRows;
}

QVariant StatusLogModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole || !index.isValid()) return {};
  return DisplayText(myLog.Line(static_cast<std::size_t>(index.row())));
}

void StatusLogModel::AddRows() {
  const int count = static_cast<int>(myLog.Count());
  beginInsertRows({}, myRows, count - 1);
  myRows = count;
  endInsertRows();
  DropOldest();
}

void StatusLogModel::DropOldest() {
  const std::size_t lines = myLog.LinesOver(myMostBytes);
  if (lines == 0) return;
  beginRemoveRows({}, 0, static_cast<int>(lines) - 1);
  myLog.DropOldest(lines);
  myRows -= static_cast<int>(lines);
  endRemoveRows();
}

}  // namespace corvane
