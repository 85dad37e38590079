#pragma once

#include <string_view>

#include <QAbstractListModel>
#include <QTimer>

#include "console/status_log.h"

namespace corvane {

// The status log as rows of a list. Appending only stores: the new lines become rows together, a
// moment later, so that a burst of thousands costs the view one layout and not thousands.
class StatusLogModel : public QAbstractListModel {
 public:
  StatusLogModel();

  void Append(std::string_view prefix, std::string_view text);
  void Clear();
  const StatusLog& Log() const { return myLog; }

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  void AddRows();

  StatusLog myLog;
  int myRows = 0;  // lines that are rows already
  QTimer myAddRows;
};

}  // namespace corvane
