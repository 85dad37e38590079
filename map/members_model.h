#pragma once

#include <unordered_map>
#include <vector>

#include <QAbstractTableModel>
#include <QCoreApplication>
#include <QTimer>

#include "client/members.h"

namespace corvane::map {

// The members as rows. Takes what has happened twice a second and all at once, so that the list's
// cost does not go by the number of reports.
class MembersModel : public QAbstractTableModel, private client::MembersWatcher {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MembersModel)

 public:
  enum Column { kName, kX, kY, kFacet, kHp, kState, kNews, kColumns };
  // What rows are sorted by.
  static constexpr int kSortRole = Qt::UserRole;

  // Lists the members that come from now on.
  explicit MembersModel(client::Members& members);
  ~MembersModel() override;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  // Null where the member has gone since the rows were last brought up to date.
  const client::Member* MemberAt(int row) const {
    return myRows[static_cast<std::size_t>(row)].member;
  }
  // -1 where there is no row yet.
  int RowOf(const client::Member& member) const;

  // Takes what has happened.
  void Update();

 private:
  struct Row {
    const client::Member* member;
    QString name;
  };

  void Added(const client::Member& member) override;
  void Changed(const client::Member& member) override;
  void Removed(const client::Member& member) override;
  void RemoveGone();
  void Number();
  static QString StateOf(const client::Member& member);
  static QString NewsOf(const client::Member& member);

  client::Members& myMembers;
  std::vector<Row> myRows;
  std::unordered_map<const client::Member*, int> myPlaces;
  std::vector<const client::Member*> myNew;
  std::size_t myGone = 0;
  QTimer myTimer;
};

}  // namespace corvane::map
