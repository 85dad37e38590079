#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

#include <QAbstractListModel>

#include "framework/gathering.h"

namespace corvane {

// The status log as rows of a list. A line becomes a row at once; those of the next 20 ms do
// together, so that a burst of thousands costs the view few layouts and not thousands. Keeps so
// many bytes at most; the oldest lines go.
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
  int myRows = 0;  // lines that are rows already
  Gathering myAddRows;
};

}  // namespace corvane
