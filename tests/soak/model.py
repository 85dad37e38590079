"""The model: networks, sessions, bans and grants as the real server should have them after the same
events, and what each client should hear.

Time passes in steps. Between two steps everything that was said has arrived, so what a client heard
in a step can be compared with what was said: all of it, once, and of each source in order. A client
that came or left during a step missed its beginning or its end, and nothing in between.
"""

from typing import Dict, Iterable, List, NamedTuple, Optional, Tuple

import wire
from clients import LEFT, Connection, Difference


def folded(name: bytes) -> str:
    return name.decode().casefold()


class Ban(NamedTuple):
    address: str
    by: str
    reason: str
    network: str


class Grant(NamedTuple):
    name: str
    address: str
    network: str


class Network:
    def __init__(self, name: str, password: str, most: int, enabled: bool = True):
        self.name = name
        self.password = password
        self.most = most
        self.enabled = enabled
        self.members: List["Session"] = []  # that have chosen it
        self.said: Dict[bytes, List[bytes]] = {}  # in this step, by source
        self.abrupt: List[bytes] = []  # sources that were cut off, at an unknown point

    def seats(self) -> int:
        return sum(1 for session in self.members if session.has_seat)

    def row(self) -> Tuple[str, str, int, bool]:
        return self.name, self.password, self.most, self.enabled

    def say(self, source: bytes, what: bytes) -> None:
        self.said.setdefault(source, []).append(what)


class Span:
    """The part of a step in which a session was a member of a network."""

    def __init__(self, network: Network, begins_late: bool):
        self.network = network
        self.begins_late = begins_late
        self.ends_early = False


class Session:
    """What the server knows of a connection, and what its client should hear."""

    def __init__(self, model: "Model", connection: Connection, address: str):
        self.model = model
        self.connection = connection
        self.address = address
        self.state = "network"  # the next login step; then "in", or "refused"
        self.name = b""
        self.key = ""  # the folded name
        self.network: Optional[Network] = None
        self.has_seat = False
        self.is_over = False
        self.record: Tuple[int, ...] = (0, 0, 0, 0, 0, 0)
        self.serial = 0
        # The unsent rest of a message, and its report; the rest is empty if it never comes.
        self.half: Optional[Tuple[bytes, bytes]] = None
        self.spans: List[Span] = []
        self.owed: Dict[bytes, List[bytes]] = {}  # from steps in which it did not read
        self.answers: List[Tuple[int, bytes]] = []
        self.notices: List[Tuple[int, bytes]] = []
        self.byes = 0

    def hears(self) -> bool:
        return self.network is not None and (self.state == "in" or not self.model.hardened)

    # ---- what a client says, and what it is answered

    def take(self, command: int, payload: bytes = b"") -> bytes:
        """Applies a client's message to the model and returns its frame."""
        if self.state == "refused":
            pass
        elif command == wire.NETWORK:
            self.choose(payload.decode())
        elif command == wire.PASSWORD:
            self.try_password(payload)
        elif command == wire.NAME:
            self.take_name(payload)
        elif command == wire.ADMIN:
            self.answer(wire.ADMIN, b"1" if self.is_admin() else b"0")
        elif command == wire.BYE:
            self.byes += 1
        elif self.state == "in":
            self.take_as_member(command, payload)
        return wire.frame(command, payload)

    def answer(self, command: int, payload: bytes) -> None:
        self.answers.append((command, payload))

    def notify(self, command: int, reason: bytes) -> None:
        self.notices.append((command, reason))
        # Under hardened rules the server closes a client that does not leave.
        self.connection.may_end = self.connection.may_end or self.model.hardened

    def move(self, network: Optional[Network]) -> None:
        if network is self.network:
            return
        self.leave_network()
        self.network = network
        if network is not None:
            network.members.append(self)
            self.begin_to_hear()

    def begin_to_hear(self) -> None:
        if self.hears() and self.network is not None:
            self.spans.append(Span(self.network, begins_late=True))

    def leave_network(self) -> None:
        for span in self.spans:
            span.ends_early = True
        if self.network is not None:
            self.network.members.remove(self)
        self.network = None

    def take_seat(self) -> bool:
        network = self.network
        self.has_seat = False
        self.has_seat = network is not None and network.enabled and network.seats() < network.most
        return self.has_seat

    def choose(self, name: str) -> None:
        if self.state == "in":
            return self.answer(wire.PASSWORD, wire.FAIL)
        self.has_seat = False
        self.move(self.model.find(name))
        takes = self.take_seat()
        self.state = "password" if takes else "network"
        self.answer(wire.PASSWORD, wire.OK if takes else wire.FAIL)

    def try_password(self, digest: bytes) -> None:
        if self.state not in ("password", "name"):
            return self.answer(wire.NAME, wire.FAIL)
        assert self.network is not None
        is_right = digest == wire.digest(self.network.password)
        works = is_right and (self.has_seat or self.take_seat())
        self.has_seat = works
        self.state = "name" if works else "password"
        self.answer(wire.NAME, wire.OK if works else wire.FAIL)

    def take_name(self, name: bytes) -> None:
        works = self.state == "name" and self.model.is_free(name) and \
            (self.has_seat or self.take_seat())
        if self.state == "name":
            self.has_seat = works
        if works:
            heard = self.hears()
            self.state = "in"
            self.name = name
            self.key = folded(name)
            if not heard:
                self.begin_to_hear()
        self.answer(wire.REPORT, wire.OK if works else wire.FAIL)

    def is_admin(self) -> bool:
        return self.state == "in" and self.network is not None and \
            Grant(self.name.decode(), self.address, self.network.name) in self.model.grants

    def take_as_member(self, command: int, payload: bytes) -> None:
        if command == wire.REPORT:
            self.report(payload)
        elif not self.is_admin():
            return
        assert self.network is not None
        first, _, second = payload.partition(b"|")
        if command == wire.KICK_USER:
            for target in self.model.named(first, second.decode()):
                target.notify(wire.KICK, self.network.name.encode())
        elif command == wire.BAN_USER:
            for target in self.model.named(first, self.network.name):
                self.model.ban(target, self.name.decode(), second, self.network.name)
        elif command == wire.MESSAGE_ALL:
            self.model.message(payload, self.network.name)

    def report(self, payload: bytes) -> None:
        """Numbers separated by commas; missing ones are 0."""
        fields = [int(float(field)) for field in payload.split(b",") if field]
        fields += [0] * (6 - len(fields))
        fields[4:] = [int(fields[4] != 0), int(fields[5] != 0)]
        moved = tuple(fields[:4]) != self.record[:4]
        self.record = tuple(fields)
        if moved and self.network is not None:
            self.network.say(self.name, self.name + b"|%d,%d,%d,%d,%d,%d" % self.record)

    def list_record(self) -> bytes:
        return self.name + b"|%d,%d,%d,%d%d,%d" % self.record

    def leave(self, is_abrupt: bool = False) -> None:
        """The connection ends, from either end. `is_abrupt`: its last messages may be lost."""
        if self.is_over:
            return
        self.is_over = True
        self.model.sessions.remove(self)
        network = self.network
        self.has_seat = False
        self.leave_network()
        if network is not None:
            if is_abrupt:
                network.abrupt.append(self.name)
            network.say(self.name, LEFT)


class Model:
    def __init__(self, hardened: bool):
        self.hardened = hardened
        self.networks: List[Network] = []
        self.gone: List[Network] = []  # deleted, with remaining members
        self.rows: List[Tuple[str, str, int, bool]] = []  # stored networks
        self.bans: List[Ban] = []
        self.grants: List[Grant] = []
        self.sessions: List[Session] = []

    # ---- looking

    def find(self, name: str) -> Optional[Network]:
        return next((n for n in self.networks if n.name.casefold() == name.casefold()), None)

    def is_free(self, name: bytes) -> bool:
        key = folded(name)
        return all(session.key != key for session in self.sessions)

    def named(self, name: bytes, network: str) -> List[Session]:
        key = folded(name)
        return [s for s in self.sessions if s.network is not None and s.key == key
                and s.network.name.casefold() == network.casefold()]

    def is_banned(self, address: str) -> bool:
        return any(ban.address == address for ban in self.bans)

    def strangers(self) -> List[Session]:
        return [s for s in self.sessions if s.network is None]

    def message_is_fatal(self) -> bool:
        return not self.hardened and bool(self.strangers())

    # ---- doing

    def connect(self, connection: Connection, address: str) -> Session:
        session = Session(self, connection, address)
        self.sessions.append(session)
        if self.is_banned(address):
            session.state = "refused"
            session.notify(wire.BAN, wire.REFUSAL)
        else:
            session.answer(wire.NETWORK, b"Network")
        return session

    def ban(self, target: Session, by: str, reason: bytes, network: str) -> None:
        if self.hardened:
            reason = reason[:1024]
        self.bans.append(Ban(target.address, by, reason.decode(), network))
        target.notify(wire.BAN, reason)

    def message(self, text: bytes, network: Optional[str]) -> None:
        for one in self.networks + self.gone:
            if network is None or one.name.casefold() == network.casefold():
                one.say(b"#" + text.partition(b"#")[0], text)

    def delete(self, network: Network) -> None:
        self.message(wire.REMOVAL, network.name)
        self.bye(network)
        self.networks.remove(network)
        self.gone.append(network)

    def bye(self, network: Network) -> None:
        for session in network.members:
            if session.hears():
                session.byes += 1

    def restart(self) -> None:
        """A new server on the same database."""
        for session in self.sessions:
            session.is_over = True
        self.sessions = []
        self.gone = []
        self.networks = [Network(*row) for row in self.rows]

    # ---- the end of a step

    def settle(self, played: List[Session], is_cut: bool = False) -> None:
        """Compares what was heard with what was said, and begins a step. `is_cut`: the server was
        killed, so anyone may have missed the end."""
        self.hold(played, is_cut)
        self.begin_step()

    def hold(self, played: List[Session], is_cut: bool = False) -> None:
        if not is_cut:
            self.resolve_abrupt(played)
        for session in played:
            self.check(session, is_cut)

    def begin_step(self) -> None:
        for network in self.networks + self.gone:
            network.said = {}
            network.abrupt = []
        self.gone = [network for network in self.gone if network.members]
        for session in self.sessions:
            session.spans = [Span(session.network, begins_late=False)] \
                if session.hears() and session.network is not None else []

    def missing(self, session: Session) -> str:
        """Describes what a session has not heard yet; empty if nothing is known to be missing."""
        connection = session.connection
        for source, said in self.owed_now(session):
            got = connection.heard.get(source, [])
            if source in session.spans[-1].network.abrupt:
                if LEFT not in got:
                    return f"the end of {source!r}"
            elif len(got) < len(said) + len(session.owed.get(source, [])) \
                    and not session.spans[-1].begins_late:
                return f"{source!r}, {len(said)} less {len(got)}, {said[len(got):][:3]!r}"
        return "" if len(connection.notices) >= len(session.notices) else repr(session.notices)

    def resolve_abrupt(self, played: List[Session]) -> None:
        """Any number of reports of a source that was cut off counts, but the same for all."""
        for network in self.networks + self.gone:
            members = set(played).intersection(network.members)
            for source in list(network.abrupt):
                whole = [s for s in members if s.connection.is_reading and s.hears()
                         and not s.spans[-1].begins_late and s.name != source]
                if not whole:
                    continue
                network.abrupt.remove(source)
                got = whole[0].connection.heard.get(source, [])[len(whole[0].owed.get(source, [])):]
                said = network.said[source]
                if source and got != said[:len(got) - 1] + [LEFT]:
                    raise different(whole[0], source, said, got)
                network.said[source] = got if source else said

    def check(self, session: Session, is_cut: bool) -> None:
        connection = session.connection
        if not connection.is_reading:
            for source, want in self.owed_now(session):
                session.owed.setdefault(source, []).extend(want)
            return
        for span in session.spans:
            span.ends_early = span.ends_early or is_cut
        heard = connection.heard
        for span in session.spans:
            for source, said in span.network.said.items():
                if source == session.name and source:
                    continue
                want = session.owed.pop(source, []) + said
                got = heard.pop(source, [])
                # Only sessions that change their network have two spans.
                if got != want and not is_part(got, want, span.begins_late, span.ends_early):
                    raise different(session, source, want, got)
        for source, want in session.owed.items():
            got = heard.pop(source, [])
            if got != want and not (is_cut and is_part(got, want, False, True)):
                raise different(session, source, want, got)
        for source, got in heard.items():
            raise different(session, source, [], got)
        connection.heard = {}
        session.owed = {}
        self.check_answers(session, is_cut)

    def owed_now(self, session: Session) -> Iterable[Tuple[bytes, List[bytes]]]:
        for span in session.spans:
            for source, said in span.network.said.items():
                if source != session.name or not source:
                    yield source, said

    def check_answers(self, session: Session, is_cut: bool) -> None:
        connection = session.connection
        # A client that may be ended at any time may miss an answer, but no notice.
        may_miss = is_cut or (self.hardened and connection.may_end)
        got = connection.answers
        want = session.answers[:len(got)] if may_miss else session.answers
        if got != want:
            raise Difference(f"{connection.label} was answered {got!r}, not {session.answers!r}")
        received = sorted(connection.notices)
        if received != sorted(session.notices) and not (is_cut and all(
                notice in session.notices for notice in received)):
            raise Difference(f"{connection.label} received {received!r}, not {session.notices!r}")
        if connection.byes != session.byes and not (may_miss and connection.byes < session.byes):
            raise Difference(f"{connection.label} heard BYE {connection.byes} times, "
                             f"not {session.byes}")
        connection.answers, connection.notices, connection.byes = [], [], 0
        session.answers, session.notices, session.byes = [], [], 0


def is_part(got: List[bytes], want: List[bytes], begins_late: bool, ends_early: bool) -> bool:
    """Whether `got` is `want`, except for a missing beginning or end where allowed."""
    if not begins_late:
        return ends_early and got == want[:len(got)]
    if not ends_early:
        return got == want[len(want) - len(got):]
    return any(got == want[i:i + len(got)] for i in range(len(want) - len(got) + 1))


def different(session: Session, source: bytes, want: List[bytes], got: List[bytes]) -> Difference:
    place = next((i for i, (a, b) in enumerate(zip(want, got)) if a != b),
                 min(len(want), len(got)))
    return Difference(
        f"{session.connection.label} heard {len(got)} of {source!r}, but {len(want)} were said; "
        f"they differ at {place}:\n   expected {want[place:place + 3]!r}\n"
        f"   heard    {got[place:place + 3]!r}")
