#pragma once

#include <set>
#include <string>

#include <QCoreApplication>
#include <QTimer>

#include "client/members.h"
#include "map/messages_pane.h"

namespace corvane::map {

// Writes into the messages who comes and goes: what happens within a second, in one line each. The
// members of the first list after a login are no news.
class MemberNews : private client::MembersWatcher {
  Q_DECLARE_TR_FUNCTIONS(corvane::map::MemberNews)

 public:
  // Borrows both.
  MemberNews(client::Members& members, MessagesPane& messages);
  ~MemberNews() override;
  MemberNews(const MemberNews&) = delete;
  MemberNews& operator=(const MemberNews&) = delete;

 private:
  void Added(const client::Member& member) override;
  void Changed(const client::Member&) override {}
  void Removed(const client::Member& member) override;
  // Who leaves and returns within the interval is no news.
  void Note(const client::Member& member, std::set<std::string>& names,
            std::set<std::string>& opposite);
  void Write();

  client::Members& myMembers;
  MessagesPane& myMessages;
  std::set<std::string> myCame;
  std::set<std::string> myLeft;
  QTimer myTimer;
};

}  // namespace corvane::map
