#pragma once

#include <utility>

#include "server/address_table.h"
#include "server/cost_gate.h"
#include "server/login_deadlines.h"
#include "server/roster.h"
#include "server/rules.h"
#include "server/server_events.h"
#include "server/turns.h"
#include "storage/admins_table.h"
#include "storage/bans.h"

namespace corvane {

class LocationLookup;

// What all sessions of a listener share: rules, tables, the roster, and the bounds on what sessions
// cost together. Owned by the listener; borrows the loop, the database and the location lookup.
struct SessionContext {
  SessionContext(PollLoop& loop, SocketCore& listener, DatabaseConnection& serverdb,
                 LocationLookup& lookup, Rules rulesInForce)
      : rules(std::move(rulesInForce)),
        locations(lookup),
        bans(serverdb),
        admins(serverdb, rules.statementValues),
        addresses(loop, listener, rules),
        deadlines(loop, listener, rules.timeToLogin),
        roster(loop) {}

  const Rules rules;
  ServerEvents events;
  LocationLookup& locations;
  Bans bans;
  AdminsTable admins;
  CostGate costlyQuestions;  // to the database, by users whose names may make them costly
  Turns memberLists;
  AddressTable addresses;
  LoginDeadlines deadlines;
  Roster roster;
};

}  // namespace corvane
