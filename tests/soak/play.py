"""The script of the play. The seed determines all of it: each step has its own random number
generator, so that it does not depend on the outcome of earlier steps."""

import contextlib
import random
from typing import Callable, ContextManager, Dict, List, Optional

import wire
from clients import Connection, Difference, Pump
from host import Server, Shell
from model import Ban, Grant, Model, Network, Session

PASSWORD = "demo"
MEMORY_GROWTH = 64 << 20  # bytes, since a server's first step; the sanitizers keep much
# Of a client's receive buffer. With a few KiB, Linux announces free room only when the peer probes
# for it, after ever longer pauses.
SMALL_BUFFER = 32 << 10
NEVER_ENDS = 1 << 20  # bytes of a message
MAX_SEATS = 800


class Player:
    def __init__(self, index: int, network: str, is_admin: bool):
        self.name = f"Spieler-{index}-äöü" if index % 9 == 7 else f"player{index}"
        self.network = network
        self.is_admin = is_admin
        self.address = f"127.{1 + index // 200}.0.{1 + index % 200}"
        self.session: Optional[Session] = None
        self.must_leave = False  # after a kick, a ban or a BYE

    def grant(self) -> Grant:
        return Grant(self.name, self.address, self.network)


class Play:
    """A server, its players, and the model that follows the same events."""

    def __init__(self, pump: Pump, server: Server, model: Model, players: List[Player],
                 counts: Dict[str, int]):
        self.pump = pump
        self.server = server
        self.model = model
        self.players = players
        self.counts = counts
        self.shell = Shell(pump, server.programs, server.folder)
        self.leaving: List[Session] = []  # the server ends these connections in this step
        self.fault = Fault()
        self.serial = 0  # of unique texts

    # ---- players

    def ins(self) -> List[Player]:
        """The players that are logged in, read, and have no message half sent."""
        return [p for p in self.players if p.session is not None and p.session.state == "in"
                and p.session.connection.is_reading and p.session.half is None]

    def unique(self, text: str) -> str:
        self.serial += 1
        return f"{text} {self.serial}"

    def connect(self, player: Player, receive_buffer: Optional[int] = None) -> Session:
        connection = Connection(self.pump, self.server.port, player.address, player.name,
                                receive_buffer)
        player.session = self.model.connect(connection, player.address)
        self.counts["connections"] += 1
        # Under hardened rules a slow login is ended.
        connection.may_end = self.model.hardened
        return player.session

    def log_in(self, player: Player, session: Session) -> bytes:
        frames = session.take(wire.NETWORK, player.network.encode()) + \
            session.take(wire.PASSWORD, wire.digest(PASSWORD)) + \
            session.take(wire.NAME, player.name.encode())
        if session.state == "in":
            self.counts["logins"] += 1
            session.connection.may_end = False
        return frames

    def forget(self, session: Session) -> None:
        for player in self.players:
            if player.session is session:
                player.session = None
                player.must_leave = False

    def leave(self, session: Session) -> None:
        """Leaves in order: half-closes and reads to the end."""
        session.connection.half_close()
        session.leave()
        self.leaving.append(session)
        self.forget(session)

    def cut(self, session: Session, is_silent: bool = True) -> None:
        session.connection.reset()
        session.leave(is_abrupt=not is_silent)
        self.forget(session)

    def vanish(self, session: Session, witness: Session) -> None:
        """Disappears silently, which the server notices when it sends to the client."""
        if not session.connection.vanish():
            session.connection.reset()
        session.leave(is_abrupt=True)
        self.forget(session)
        witness.connection.send(self.reports(witness, random.Random(1), 1))

    def lead_off(self, session: Session) -> None:
        if session.connection.is_reading and session.half is None:
            self.leave(session)
        else:
            self.cut(session)

    def lead_off_strangers(self) -> None:
        self.settle()
        for session in self.model.strangers():
            self.lead_off(session)
        self.settle()

    def reports(self, session: Session, rng: random.Random, count: int) -> bytes:
        frames = []
        for _ in range(count):
            session.serial += 1
            kind = rng.random()
            x, y = session.serial, rng.randrange(-9999, 9999)
            payload = b"%d,%d,%d,%d,%d,%d" % (x, y, rng.randrange(5), rng.randrange(101),
                                             rng.randrange(2), rng.randrange(2))
            if kind < 0.04:
                payload = b"%d.75,%d" % (x, y)
            elif kind < 0.07:
                payload = b"%d,%d,1,100,0,1,77,8" % (x, y)
            elif kind < 0.1:  # a change of the flags only is not relayed
                payload = b"%d,%d,%d,%d,1,1" % session.record[:4]
            elif kind < 0.2:  # a change of one field is
                fields = list(session.record[:4])
                fields[rng.randrange(4)] += 1
                payload = b"%d,%d,%d,%d,0,0" % tuple(fields)
            frames.append(session.take(wire.REPORT, payload))
        self.counts["reports"] += count
        return b"".join(frames)

    # ---- what players do

    def act(self, player: Player, rng: random.Random, may_end: bool, has_witness: bool) -> None:
        """`may_end`: the player may leave or stop reading in this step. `has_witness`: another
        member stays and hears how much of a cut-off player's output arrived."""
        session = player.session
        assert session is not None
        send = session.connection.send
        kind = rng.random()
        count = min(200, int(rng.expovariate(1 / 20)) + 1)
        if player.must_leave and may_end and kind < 0.8:
            self.leave(session)
        elif kind < 0.6:
            send(self.reports(session, rng, count))
        elif kind < 0.75:
            for _ in range(rng.randrange(1, 4)):
                send(self.ask_rights(session) + self.reports(session, rng, count) +
                     session.take(wire.BYE) + session.take(77, b"nobody knows this"))
        elif kind < 0.82 or not may_end:
            pass
        elif kind < 0.87:
            send(self.reports(session, rng, count))
            self.leave(session)
        elif kind < 0.91 and has_witness:
            send(self.reports(session, rng, count))
            self.cut(session, is_silent=False)
        elif kind < 0.94:
            session.connection.stall()
        elif kind < 0.97:  # a report whose end comes later
            session.serial += 1
            report = b"%d,5" % session.serial
            frame = wire.frame(wire.REPORT, report)
            place = rng.randrange(1, len(frame))
            send(frame[:place])
            session.half = (frame[place:], report)
        elif kind < 0.985:  # part of a message that never ends
            size = 60_000 if self.model.hardened else NEVER_ENDS
            send(wire.HEADER.pack(size, 77) + b"x" * rng.randrange(size // 2))
            session.half = (b"", b"")
        elif has_witness:  # an invalid length: messages from the same read are not handled
            session.connection.may_end = True
            send(self.reports(session, rng, count) + wire.HEADER.pack(rng.choice((-1, 0, 7)), 4))
            session.leave(is_abrupt=True)
            self.leaving.append(session)
            self.forget(session)

    def ask_rights(self, session: Session) -> bytes:
        return session.take(wire.ADMIN) if self.fault.may_read else b""

    def act_half(self, session: Session, rng: random.Random) -> None:
        """Ends a half-sent message, or the connection, or neither."""
        assert session.half is not None
        rest, report = session.half
        kind = rng.random()
        if kind < 0.15:
            self.cut(session)
        elif kind < 0.6 and rest:
            session.take(wire.REPORT, report)
            session.half = None
            session.connection.send(rest)

    def act_stalled(self, session: Session, rng: random.Random) -> None:
        kind = rng.random()
        if kind < 0.1:
            self.cut(session)
        elif kind < 0.4:
            session.connection.resume()

    def come_back(self, player: Player, rng: random.Random, names: List[str]) -> List[bytes]:
        """Connects, and returns the messages of a login or of a failing one, to be sent."""
        session = self.connect(player, SMALL_BUFFER if rng.random() < 0.1 else None)
        network, digest = player.network.encode(), wire.digest(PASSWORD)
        take = session.take
        kind = rng.random()
        other = rng.choice(self.players).network.encode()
        name = rng.choice(names).upper().encode() if names else b""
        ways = [
            (0.08, lambda: [take(wire.NETWORK, network), take(wire.PASSWORD, digest)]),
            (0.05, lambda: [take(wire.NETWORK, network)]),
            (0.03, lambda: []),
            (0.04, lambda: [take(wire.NAME, b"x"), take(wire.PASSWORD, digest),
                            take(wire.REPORT, b"1,2,3"), self.ask_rights(session), b""]),
            (0.04, lambda: [take(wire.NETWORK, b"Nowhere"), take(wire.PASSWORD, digest), b""]),
            (0.04, lambda: [take(wire.NETWORK, network.upper()),
                            take(wire.PASSWORD, wire.digest("wrong")), b""]),
            (0.06 if names else 0, lambda: [take(wire.NETWORK, network),
                                            take(wire.PASSWORD, digest),
                                            take(wire.NAME, name), b""]),
            (0.05, lambda: [take(wire.NETWORK, other), take(wire.PASSWORD, digest), b""]),
        ]
        frames = [b""]
        for weight, way in ways:
            kind -= weight
            if kind < 0:
                frames = way()
                break
        # An empty one stands for the whole login.
        if frames and not frames[-1]:
            frames[-1] = self.log_in(player, session)
            if rng.random() < 0.3:
                frames += [self.ask_rights(session), take(wire.NETWORK, b"again")]
        return frames

    def arrive(self, players: List[Player], rng: random.Random, names: List[str]) -> None:
        """The players log in; some send all at once, some by message, some by a few bytes."""
        waiting = []
        for player in players:
            frames = self.come_back(player, rng, names)
            kind = rng.random()
            assert player.session is not None
            connection = player.session.connection
            if kind < 0.5:
                connection.send(b"".join(frames))
            elif kind < 0.9:
                waiting.append((connection, frames))
            else:
                whole = b"".join(frames)
                waiting.append((connection, [whole[i:i + 7] for i in range(0, len(whole), 7)]))
        while waiting:
            for connection, frames in waiting:
                if frames:
                    connection.send(frames.pop(0))
            waiting = [one for one in waiting if one[1]]
            self.pump.turn()

    def administrate(self, admin: Player, targets: List[Player], rng: random.Random,
                     may_message: bool) -> List[Player]:
        """An administrator acts. Returns the players affected."""
        session = admin.session
        assert session is not None and session.network is not None
        send, take = session.connection.send, session.take
        own = [p for p in targets if p.session is not None
               and p.session.network is session.network and p is not admin]
        kind = rng.random()
        target = rng.choice(own) if own else None
        if kind < 0.3 and may_message:
            for _ in range(rng.randrange(1, 4)):
                text = self.unique(admin.name + "#") + "." * rng.randrange(3000)
                send(take(wire.MESSAGE_ALL, text.encode()))
        elif target is None:
            pass
        elif kind < 0.6:
            send(take(wire.KICK_USER, f"{target.name}|{session.network.name}".encode()))
            return [target]
        else:
            reason = self.unique("banned") + " " + "x" * int(10 ** rng.uniform(1, 4))
            send(take(wire.BAN_USER, f"{target.name}|{reason}".encode()))
            self.counts["bans"] += 1
            return [target]
        return []

    # ---- what the operator does

    def operate_at_rest(self, rng: random.Random) -> None:
        """The operator changes networks, bans and so on, between two steps."""
        do, model = self.server.control.do, self.model
        for network in model.networks:
            if not network.enabled or network.password != PASSWORD:
                self.edit(network, PASSWORD, True)
        kind = rng.randrange(8)
        network = rng.choice([n for n in model.networks if n.row() in model.rows])
        if kind == 0:
            self.edit(network, PASSWORD, False)
        elif kind == 1:
            self.edit(network, "another", True)
        elif kind == 2:
            self.add_network(self.unique("Extra"), rng.randrange(1, MAX_SEATS))
        elif kind == 3 and not model.message_is_fatal():
            self.delete_network(network, rng.random() < 0.7)
        elif kind == 4:
            do("network disconnect", name=network.name)
            model.bye(network)
            self.send_away(network)
        elif kind == 5:
            self.lift(rng)
        elif kind == 6:
            self.reload(network, rng)
        else:
            address = f"127.9.9.{rng.randrange(1, 250)}"
            reason = self.unique("elsewhere")
            do("ban-address", address=address, reason=reason, network=network.name)
            model.bans.append(Ban(address, "Server Admin", reason, network.name))

    def edit(self, network: Network, password: str, enabled: bool) -> None:
        row = network.row()
        network.password, network.enabled = password, enabled
        self.server.control.do("network edit", name=network.name, password=password,
                               **{"enable" if enabled else "disable": True})
        self.model.rows = [network.row() if one == row else one for one in self.model.rows]

    def add_network(self, name: str, most: int) -> None:
        network = Network(name, PASSWORD, most)
        self.shell.do("network", "add", name, "--max-users", str(most), password=PASSWORD)
        self.model.networks.append(network)
        self.model.rows.append(network.row())

    def delete_network(self, network: Network, comes_back: bool) -> None:
        self.shell.do("network", "delete", network.name)
        self.model.delete(network)
        self.model.rows.remove(network.row())
        self.send_away(network)
        if comes_back or not network.name.startswith("Extra"):
            self.add_network(network.name, network.most)

    def reload(self, changed: Network, rng: random.Random) -> None:
        """Another program changes the database; a reload follows, unless it ends the server."""
        model, query = self.model, self.server.query
        extra = [n for n in model.networks if n.name.startswith("Extra") and n is not changed]
        removed = [n for n in model.networks if n.row() not in model.rows]
        if extra and not model.message_is_fatal():
            query("DELETE FROM networks WHERE name=?", extra[0].name)
            removed.append(extra[0])
        added = Network(self.unique("Loaded"), PASSWORD, 77)
        most = 801 + (changed.most + rng.randrange(199)) % 200  # never what it was
        query("INSERT INTO networks VALUES(?, ?, ?, 1)", added.name, PASSWORD, added.most)
        query("UPDATE networks SET users=? WHERE name=?", most, changed.name)
        model.rows = [row for row in model.rows if row not in [n.row() for n in removed]]
        model.rows = [(row[0], row[1], most, row[3]) if row == changed.row() else row
                      for row in model.rows] + [added.row()]
        answer = self.server.control.ask("reload")
        if removed and model.message_is_fatal():
            if answer["ok"]:
                raise Difference(f"a reload that would end the server is not refused: {answer!r}")
            # Restore the database, so that it matches the server again.
            query("DELETE FROM networks WHERE name=?", added.name)
            query("UPDATE networks SET users=? WHERE name=?", changed.most, changed.name)
            model.rows = [changed.row() if row[0] == changed.name else row
                          for row in model.rows if row[0] != added.name]
            return
        for network in removed:
            model.delete(network)
            self.send_away(network)
        changed.most = most
        model.networks.append(added)
        received = sorted((row["change"], row["name"]) for row in answer.get("rows", []))
        want = sorted([("added", added.name), *(("removed", n.name) for n in removed),
                       ("changed", changed.name)])
        if received != want:
            raise Difference(f"a reload answers {received!r}, not {want!r}")

    def send_away(self, network: Network) -> None:
        for player in self.players:
            if player.session is not None and player.session.network is network:
                player.must_leave = True

    def lift(self, rng: random.Random) -> None:
        """The operator lifts some bans, an administrator some of those in its list."""
        banned = sorted({ban.address for ban in self.model.bans})
        for address in banned:
            if rng.random() < 0.5:
                self.server.control.do("unban", ban=address)
                self.model.bans = [ban for ban in self.model.bans if ban.address != address]
        admins = [p for p in self.ins() if p.session is not None and p.session.is_admin()]
        if not admins or not self.model.bans:
            return
        session = rng.choice(admins).session
        assert session is not None and session.network is not None
        bans = [ban for ban in self.model.bans
                if not self.model.hardened or ban.network == session.network.name]
        listed: List[List[bytes]] = []

        def has_come() -> bool:
            listed[:] = [payload.split(b"\0")[:-1] for command, payload
                         in session.connection.answers if command == wire.LIST_BANS]
            return bool(listed)

        session.connection.send(session.take(wire.LIST_BANS))
        self.pump.until(has_come, lambda: f"{session.connection.label} gets the bans")
        session.connection.answers = [answer for answer in session.connection.answers
                                      if answer[0] != wire.LIST_BANS]
        # Without their numbers, which depend on the order of arrival.
        rows = sorted((row.split(b"|") for row in listed[0]), key=lambda row: row[1:])
        if [tuple(row[1:4]) for row in rows] != \
                sorted((b.address.encode(), b.by.encode(), b.reason.encode()) for b in bans):
            raise Difference(f"the bans are listed as {rows!r}, not as {bans!r}")
        for row in rows:
            if rng.random() < 0.7:
                session.connection.send(session.take(wire.LIFT_BAN, row[0]))
                self.model.bans.remove(next(
                    b for b in bans if (b.address.encode(), b.reason.encode()) ==
                    (row[1], row[3])))
        # From here on they are lifted, even if the server stops now.
        self.ask_around([session])

    def operate(self, targets: List[Player], rng: random.Random,
                may_message: bool) -> List[Player]:
        """The operator acts amid the traffic. Returns the players affected."""
        do, model = self.server.control.do, self.model
        kind = rng.randrange(5)
        player = rng.choice(targets) if targets else None
        if kind == 0 and may_message:
            network = rng.choice(model.networks)
            text = self.unique("operator#")
            to_all = rng.random() < 0.5
            do("message", text=text, **({} if to_all else {"network": network.name}))
            model.message(text.encode(), None if to_all else network.name)
        elif kind == 1 and self.fault.may_write:
            file = self.server.folder / "amid.rsd"
            self.shell.do("backup", str(file), "--overwrite")
        elif player is None or player.session is None or player.session.network is None:
            pass
        elif kind == 2:
            reason = self.unique("operator's kick")
            do("kick", user=player.name, reason=reason)
            player.session.notify(wire.KICK, reason.encode())
            return [player]
        elif kind == 3:
            reason = self.unique("operator's ban")
            do("ban", user=player.session.connection.peer_name, reason=reason)
            model.ban(player.session, "Server Admin", reason.encode(), player.session.network.name)
            self.counts["bans"] += 1
            return [player]
        elif kind == 4:
            session = player.session
            session.connection.may_end = True
            self.shell.do("disconnect", player.name)
            session.leave()
            self.leaving.append(session)
            self.forget(session)
        return []

    # ---- a step

    def step(self, rng: random.Random, fault: Optional["Fault"] = None,
             comes: float = 0.4) -> None:
        """Players, administrators and the operator act under a fault; then everything is compared
        with the model. `comes`: the share of disconnected players that connect."""
        fault = self.fault = fault or Fault()
        is_quiet = rng.random() < 0.35 and comes < 1  # no logins, so that messages are safe
        for player in self.players:
            session = player.session
            if session is not None and session.state != "in":
                if rng.random() < 0.5 or is_quiet or self.model.hardened:
                    self.lead_off(session)
        self.settle()
        if fault.may_write:
            self.operate_at_rest(rng)
        self.begin_ends(rng)

        here = self.ins()
        rng.shuffle(here)
        witnesses: Dict[int, Player] = {}
        for player in here:
            session = player.session
            assert session is not None and session.network is not None
            if not player.must_leave or player.is_admin:
                witnesses.setdefault(id(session.network), player)
        stays = set(witnesses.values())
        targets = [p for p in here if p not in stays and rng.random() < 0.15]
        stays.update(targets)
        admins = [p for p in here if p.is_admin and p not in targets
                  and p.session is not None and p.session.is_admin()]
        stays.update(admins)
        names = [p.name for p in stays if p not in targets]
        coming = [p for p in self.players if p.session is None and rng.random() < comes]
        may_message = self.model.hardened or \
            (is_quiet and not self.model.message_is_fatal())

        with fault.around(self, rng):
            actions: List[Callable[[], object]] = []
            for player in here:
                if player in targets:
                    continue
                has_witness = id(player.session.network) in witnesses
                actions.append(lambda p=player, w=has_witness:
                               self.act(p, rng, p not in stays, w))
            free = list(targets)
            if fault.may_read:
                for admin in admins:
                    if rng.random() < 0.4:
                        actions.append(lambda a=admin: self.aim(
                            free, self.administrate(a, free, rng, may_message)))
            if fault.may_operate:
                actions.append(lambda: self.aim(free, self.operate(free, rng, may_message)))
            if fault.may_refuse and rng.random() < 0.5:
                actions.append(self.add_in_vain)
            if not is_quiet:
                parts = [coming[i::4] for i in range(4)]
                actions += [lambda c=part: self.arrive(
                    [p for p in c if fault.may_read or not self.model.is_banned(p.address)],
                    rng, names) for part in parts]
            rng.shuffle(actions)
            for number, action in enumerate(actions):
                action()
                if number % 8 == 0:
                    self.pump.turn()
            for _ in range(rng.randrange(4)):
                self.report_all([p for p in here if p not in targets], rng)
            self.vanish_some([p for p in here if p not in stays], witnesses, rng)
            if fault.serves:
                self.ask_around([p.session for p in here if p.session is not None])
        self.fault = Fault()
        self.finish()

    def report_all(self, players: List[Player], rng: random.Random) -> None:
        """All players that can send once more report."""
        for player in players:
            session = player.session
            if session is not None and session.half is None and session.connection.is_reading:
                session.connection.send(self.reports(session, rng, rng.randrange(1, 20)))

    @staticmethod
    def aim(free: List[Player], hit: List[Player]) -> None:
        for player in hit:
            free.remove(player)

    def begin_ends(self, rng: random.Random) -> None:
        """Players with a half-sent message, or not reading, continue or leave."""
        for player in self.players:
            session = player.session
            if session is None:
                pass
            elif session.half is not None:
                self.act_half(session, rng)
            elif not session.connection.is_reading:
                self.act_stalled(session, rng)

    def vanish_some(self, here: List[Player], witnesses: Dict[int, Player],
                    rng: random.Random) -> None:
        for player in here:
            session = player.session
            if rng.random() > 0.03 or session is None or session.half is not None \
                    or not session.connection.is_reading:
                continue
            witness = witnesses.get(id(session.network))
            if witness is not None and witness.session is not None:
                self.vanish(session, witness.session)

    def add_in_vain(self) -> None:
        """A network that cannot be stored exists until the server ends."""
        name = self.unique("Unstored")
        answer = self.server.control.ask("network add", name=name, password=PASSWORD)
        if answer["ok"] or "done until the server ends" not in answer["error"]:
            raise Difference(f"a network that cannot be stored: {answer!r}")
        self.model.networks.append(Network(name, PASSWORD, 5))

    def finish(self) -> None:
        """Waits until everything said has arrived, and compares everything with the model."""
        for player in self.players:
            session = player.session
            if session is not None and any(notice[1] != wire.REFUSAL for notice in session.notices):
                player.must_leave = True
        if self.model.hardened:
            self.ask_around(self.model.sessions)
            for player in self.players:
                session = player.session
                if session is not None and (session.notices or session.state != "in"):
                    self.lead_off(session)
        self.settle()
        self.observe()
        self.server.check_database(self.model)
        self.check_footprint(len(self.model.sessions))

    def ask_around(self, sessions: List[Session]) -> None:
        """Waits for an answer to each session, after which its earlier messages are handled."""
        asked = []
        for session in list(sessions):
            connection = session.connection
            if session.is_over or session.half is not None or session.state == "refused" \
                    or not connection.is_reading or connection.may_end:
                continue
            connection.send(session.take(wire.BYE))
            asked.append(session)
        for session in asked:
            connection = session.connection
            self.pump.until(lambda: connection.byes >= session.byes,
                            lambda: f"{connection.label} is answered: {connection.byes} "
                                    f"of {session.byes}; notices {connection.notices!r}; "
                                    f"{connection.queues()}")

    def settle(self) -> None:
        for session in self.leaving:
            connection = session.connection
            self.pump.until(lambda: not connection.is_open,
                            lambda: f"the connection of {connection.label} ends")
        count = len(self.model.sessions)
        seen = [-1]

        def has_count() -> bool:
            seen[0] = self.server.control.do("status")["connections"]
            return seen[0] == count

        self.pump.until(has_count, lambda: f"{count} connections, not {seen[0]}")
        # After the first round all messages are handled, after the second all output is delivered.
        for _ in range(2):
            self.ask_around(self.model.sessions)
        # Sessions that cannot be asked come last: a loss shows at the others at once.
        late = [s for s in self.model.sessions if s.half is not None or s.state == "refused"]
        played = [s for s in self.model.sessions + self.leaving if s not in late]
        self.count(played)
        self.model.hold(played)
        for session in late:
            self.pump.until(lambda: not self.model.missing(session),
                            lambda: f"{session.connection.label} hears "
                                    f"{self.model.missing(session)}")
        self.count(late)
        self.model.settle(late)
        self.leaving = []

    def count(self, played: List[Session]) -> None:
        self.counts["deliveries"] += sum(
            len(what) for session in played if session.connection.is_reading
            for what in session.connection.heard.values())

    def observe(self) -> None:
        """Compares the server's lists, and lists of members, with the model."""
        control, model = self.server.control, self.model
        rows = [(row["name"], row["users"], row["max-users"], row["enabled"])
                for row in control.do("networks")["rows"]]
        want = [(n.name, n.seats(), n.most, n.enabled) for n in model.networks]
        if rows != want:
            raise Difference(f"networks: {[r for r in rows if r not in want]!r}, "
                             f"not {[w for w in want if w not in rows]!r}")
        users = sorted((row["name"], row["network"], row["address"])
                       for row in control.do("users")["rows"])
        expected = sorted((s.name.decode(), s.network.name, s.connection.peer_name)
                          for s in model.sessions if s.state == "in" and s.network is not None)
        if users != expected:
            raise Difference(f"users: {[u for u in users if u not in expected]!r}, "
                             f"not {[u for u in expected if u not in users]!r}")
        if model.message_is_fatal():
            answer = control.ask("message", text="hello")
            strangers = sorted(s.connection.peer_name for s in model.strangers())
            if answer["ok"] or sorted(answer["addresses"]) != strangers:
                raise Difference(f"strangers: {answer!r}, not {strangers!r}")
        for player in self.ins()[:40:10]:
            self.ask_members(player.session)

    def ask_members(self, session: Session) -> None:
        """Compares a list of members. The answer to another question marks its end."""
        assert session.network is not None
        connection = session.connection
        connection.send(session.take(wire.MEMBER) + session.take(wire.ADMIN))
        self.pump.until(lambda: any(c == wire.ADMIN for c, _ in connection.answers),
                        lambda: f"{connection.label} gets the members")
        received = sorted(p for c, p in connection.answers if c == wire.MEMBER)
        want = sorted(s.list_record() for s in session.network.members
                      if s is not session and s.name)
        if received != want:
            raise Difference(f"{connection.label} gets the members {received!r}, not {want!r}")
        connection.answers = [one for one in connection.answers if one[0] != wire.MEMBER]

    def check_footprint(self, connections: int) -> None:
        """Checks descriptors and memory at rest."""
        server, control = self.server, self.server.control
        if server.first_memory is None:
            server.first_memory = server.memory()
            server.first_open = len(server.open_files()) - connections
        most = server.first_open + connections
        self.pump.until(lambda: len(server.open_files()) <= most,
                        lambda: f"{most} descriptors, not {len(server.open_files())}")
        status = control.do("status")
        if connections == 0 and status["input-held"] + status["output-held"] > 0:
            raise Difference(f"with nobody connected these are held: {status!r}")
        if server.memory() > server.first_memory + MEMORY_GROWTH:
            raise Difference(f"the server holds {server.memory()} bytes of memory, and held "
                             f"{server.first_memory} after its first step")


class Fault:
    """A fault during a step, and what still works under it."""

    name = "nothing"
    serves = True  # those who are connected
    may_read = True  # the database
    may_write = True
    may_operate = True
    may_refuse = False  # to store a network

    def around(self, play: Play, rng: random.Random) -> ContextManager[None]:
        return contextlib.nullcontext()
