#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

#include <QAbstractListModel>

#include "framework/coalescing_timer.h"

namespace corvane {

// The status log as rows of a list. Adds the first line at once and coalesces those of the next
// 20 ms, so a burst costs the view few layouts. Drops the oldest lines above `maxBytes`.
class StatusLogModel : public QAbstractListModel {
 public:
  explicit StatusLogModel(std::size_t maxBytes = std::size_t{64} << 20);

  void Append(std::string_view prefix, std::string_view text);
  void Clear();

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  void AddRows();
  void DropOldest();

  const std::size_t myMaxBytes;
  std::deque<std::string> myLines;
  std::size_t myBytes = 0;
  int myRows = 0;  // lines that the view knows
  CoalescingTimer myAddRows;
};

}  // namespace corvane
