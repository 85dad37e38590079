#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <QAbstractTableModel>
#include <QCoreApplication>
#include <QTimer>

#include "client/members.h"
#include "map/alarms/alarm_watch.h"

namespace corvane::map {

// The members and the user as table rows. Applies all changes together twice a second, so the cost
// does not grow with the rate of reports.
class MembersModel : public QAbstractTableModel, private client::MembersWatcher {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MembersModel)

 public:
  enum Column { kName, kX, kY, kFacet, kHp, kState, kNews, kColumns };
  // The role of the values that rows are sorted by.
  static constexpr int kSortRole = Qt::UserRole;

  // Borrows the members, which must still be empty.
  explicit MembersModel(client::Members& members);
  ~MembersModel() override;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  // How long ago the last news came.
  static QString NewsOf(const client::Member& member);

  // Shows the user's row; without a name there is none.
  void ShowOwn(const std::string& name, const std::optional<client::Report>& report);
  bool IsOwn(int row) const { return MemberAt(row) == &myOwn; }
  // Shows alarms as states, from now on. Borrows the watch.
  void ShowAlarms(const AlarmWatch& watch) { myAlarms = &watch; }
  // Without alarms.
  static QString PlainStateOf(const client::Member& member);

  // Null if the member was removed after the last Update.
  const client::Member* MemberAt(int row) const {
    return myRows[static_cast<std::size_t>(row)].member;
  }
  // -1 if the member was added after the last Update.
  int RowOf(const client::Member& member) const;

  // Applies the changes since the last call.
  void Update();

 private:
  struct Row {
    const client::Member* member;
    QString name;
    QString folded;  // to sort and filter by: longer, without letter case
  };

  void Added(const client::Member& member) override;
  void Changed(const client::Member& member) override;
  void Removed(const client::Member& member) override;
  void RemoveGone();
  void Number();
  // Empty without an alarm.
  QString AlarmOf(const client::Member& member) const;
  // By state: alarms first, members without a place last.
  int RankOf(const client::Member& member) const;

  client::Members& myMembers;
  client::Member myOwn;
  const AlarmWatch* myAlarms = nullptr;
  std::vector<Row> myRows;
  std::unordered_map<const client::Member*, int> myPlaces;
  std::vector<const client::Member*> myNew;
  std::size_t myGone = 0;
  bool myWasCurrent = true;
  QTimer myTimer;
};

}  // namespace corvane::map
