-- Networks of several sizes, bans and administrators, for the pictures.
UPDATE networks SET users = 50 WHERE name = 'Iron Wolves';
UPDATE networks SET users = 150 WHERE name = 'Lantern Guild';
UPDATE networks SET users = 12 WHERE name = 'Night Owls';
INSERT INTO bans (address, "by", reason, bandate, banlength, network) VALUES
  ('198.51.100.17', 'Server Admin', 'Reporting false positions', '2026-02-03 21:14:09', 1, 'Iron Wolves'),
  ('198.51.100.201', 'Aldric', 'Spying for another guild', '2026-02-17 19:40:51', 1, 'Iron Wolves'),
  ('203.0.113.5', 'Server Admin', 'Shared the password', '2026-03-08 08:02:33', 1, 'Lantern Guild'),
  ('203.0.113.77', 'Cassia', 'Left the guild', '2026-03-29 23:55:10', 1, 'Lantern Guild'),
  ('192.0.2.140', 'Server Admin', 'Insults', '2026-04-11 17:26:48', 1, 'Night Owls'),
  ('192.0.2.9', 'Server Admin', 'Shared the password', '2026-05-02 12:00:05', 1, 'Lantern Guild'),
  ('198.51.100.64', 'Aldric', 'Insults', '2026-05-30 20:31:44', 1, 'Iron Wolves'),
  ('203.0.113.188', 'Server Admin', 'Reporting false positions', '2026-06-14 18:09:27', 1, 'Night Owls');
INSERT INTO admins (name, address, network) VALUES
  ('Aldric', '192.0.2.33', 'Iron Wolves'),
  ('Brenna', '198.51.100.90', 'Iron Wolves'),
  ('Cassia', '203.0.113.12', 'Lantern Guild'),
  ('Oriel', '203.0.113.61', 'Night Owls');
