#include "console/status_log_model.h"

#include "framework/text.h"

namespace corvane {

StatusLogModel::StatusLogModel(std::size_t maxBytes)
    : myMaxBytes(maxBytes), myAddRows([this] { AddRows(); }, CoalescingTimer::First::Now) {}

void StatusLogModel::Append(std::string_view prefix, std::string_view text) {
  myLines.emplace_back(prefix).append(text);
  myBytes += myLines.back().size();
  myAddRows.Note();
}

void StatusLogModel::Clear() {
  beginResetModel();
  myAddRows.Stop();
  myLines.clear();
  myBytes = 0;
  myRows = 0;
  endResetModel();
}

int StatusLogModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : myRows;
}

QVariant StatusLogModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::DisplayRole || !index.isValid()) return {};
  return DisplayText(myLines[static_cast<std::size_t>(index.row())]);
}

void StatusLogModel::AddRows() {
  const int count = static_cast<int>(myLines.size());
  beginInsertRows({}, myRows, count - 1);
  myRows = count;
  endInsertRows();
  DropOldest();
}

// Drops a 64th more than necessary, so that one layout serves many lines.
void StatusLogModel::DropOldest() {
  if (myBytes <= myMaxBytes) return;
  std::size_t left = myBytes;
  int lines = 0;
  while (left > myMaxBytes / 64 * 63)
    left -= myLines[static_cast<std::size_t>(lines++)].size();
  beginRemoveRows({}, 0, lines - 1);
  myLines.erase(myLines.begin(), myLines.begin() + lines);
  myBytes = left;
  myRows -= lines;
  endRemoveRows();
}

}  // namespace corvane
