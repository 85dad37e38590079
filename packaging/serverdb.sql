-- The server's database. The server itself never creates it: an installer runs this text on an
-- empty file, for example with: sqlite3 serverdb.rsd < serverdb.sql
-- On a file that has the tables it changes nothing.

BEGIN;

CREATE TABLE IF NOT EXISTS networks (
  name TEXT,
  pass TEXT,
  users INTEGER,
  enabled BOOLEAN
);

-- AUTOINCREMENT: the number of a lifted ban or grant never comes back, so a list that somebody
-- still holds cannot delete a later row.
CREATE TABLE IF NOT EXISTS bans (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  address TEXT,
  "by" TEXT,
  reason TEXT,
  bandate DATETIME,
  banlength INTEGER,
  network TEXT
);

-- When bans end, in UTC. A ban without a row never does.
CREATE TABLE IF NOT EXISTS ban_ends (
  banid INTEGER PRIMARY KEY,
  until TEXT
);

-- Banned ranges of IPv4 addresses as numbers, and when they end, in UTC; NULL: never.
CREATE TABLE IF NOT EXISTS ban_ranges (
  id INTEGER PRIMARY KEY,
  first INTEGER,
  last INTEGER,
  reason TEXT,
  until TEXT
);

CREATE TABLE IF NOT EXISTS admins (
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  name TEXT,
  address TEXT,
  network TEXT
);

CREATE INDEX IF NOT EXISTS bans_by_address ON bans (address);
CREATE INDEX IF NOT EXISTS ban_ends_by_until ON ban_ends (until);
CREATE INDEX IF NOT EXISTS ban_ranges_by_first ON ban_ranges (first);
CREATE INDEX IF NOT EXISTS admins_by_grant ON admins (name, network, address);

COMMIT;
